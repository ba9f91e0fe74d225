#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "qzlog/logcfg.h"
#include "tests/message/fresh_process.h"
#include "tests/message/readable_messages.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

constexpr const char* kConverterText =
    "_qz_LOG_log_message::get_readable_message:  UnicodeConverter constructor failed!";
class FormatMessage : public testing::Test {
 protected:
  ReadableMessages messages_;
};

TEST_F(FormatMessage, AroundTheShortForm_NeitherReadsNorWritesTheCache) {
  const auto entry = messages_.entry("a");
  EXPECT_EQ(entry->format_message(false, 0), "Disk a");
  EXPECT_EQ(buffer_form(*entry), "Disk a");  // not cached by it
  entry->get_readable_message(false, 0);
  EXPECT_EQ(entry->format_message(false, 0), "Disk a");  // afresh
  EXPECT_EQ(buffer_form(*entry), "");                    // and the cache is as it was
}

TEST_F(FormatMessage, AnyLength_Whole) {
  const std::string filler(300000, 'x');
  const auto entry = messages_.entry_with_template(filler + " %s%Name%.%_%TIMESTAMP%");
  const std::string name(2048, 'n');
  entry->add_attrib_mbstr("Name", name.c_str(), true);
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    for (const char* page : {"", "UTF-8", "ISO-8859-1"}) {
      qz_LOG_LogConfig::SetCodePage(page);
      EXPECT_EQ(entry->format_message(false, 0), filler + " " + name + ".") << page;
    }
  }
}

TEST_F(FormatMessage, AroundTheScratchSize_Whole) {
  for (const std::size_t length : {65535U, 65536U, 65537U, 131072U}) {
    const std::string text(length, 'x');
    const auto entry = messages_.entry_with_template(text + "%_%TIMESTAMP%");
    for (const bool icu : {true, false}) {
      qz_LOG_LogConfig::SetICUEnabled(icu);
      EXPECT_EQ(entry->format_message(false, 0), text);
    }
  }
}

std::string repeated_text(std::string_view part, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += part;
  return text;
}

TEST_F(FormatMessage, InCodePagesThatNeedMoreRoom_Whole) {
  const struct {
    const char* code_page;
    const char* part;
    std::string bytes;
  } cases[] = {{"UTF-8", "漢", "漢"},
               {"GB18030", "é😀", "\xA8\xA6\x94\x39\xFC\x36"},
               {"ISO-2022-JP", "a漢", "a\x1B$B4A\x1B(B"},
               {"UTF-32BE", "a", std::string("\0\0\0a", 4)},
               {"UTF-16BE", "a漢", std::string("\0a\x6F\x22", 4)}};
  for (const int count : {1, 3, 50000}) {
    for (const auto& c : cases) {
      qz_LOG_LogConfig::SetCodePage("");
      const auto entry = messages_.entry_with_template(repeated_text(c.part, count) + "%_%TIMESTAMP%");
      qz_LOG_LogConfig::SetCodePage(c.code_page);
      EXPECT_EQ(entry->format_message(false, 0), repeated_text(c.bytes, count)) << c.code_page << " " << count;
    }
  }
}

TEST_F(FormatMessage, AfterTheCodePageChanged_InTheNewOne) {
  const auto entry = messages_.entry_with_template("é%_%TIMESTAMP%");
  for (int i = 0; i < 2; ++i) {
    qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
    EXPECT_EQ(entry->format_message(false, 0), "\xE9");
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    EXPECT_EQ(entry->format_message(false, 0), "é");
    qz_LOG_LogConfig::SetCodePage("IBM850");
    EXPECT_EQ(entry->format_message(false, 0), "\x82");
  }
}

TEST_F(FormatMessage, OfWhatTheCodePageLacks_Replaced) {
  const auto entry = messages_.entry_with_template("a漢b%_%TIMESTAMP%");
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  EXPECT_EQ(entry->format_message(false, 0),
            "a\x1A"
            "b");
}

TEST_F(FormatMessage, WithAnUnknownCodePage_ThrowsUntilItIsAGoodOne) {
  const auto entry = messages_.entry("a");
  qz_LOG_LogConfig::SetCodePage("no such page");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(thrown_by([&] { entry->format_message(false, 0); }), thrown<QZX_logging_internal_error>(kConversionText));
  }
  qz_LOG_LogConfig::SetICUEnabled(false);
  EXPECT_EQ(entry->format_message(false, 0), "Disk a");
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetCodePage("");
  EXPECT_EQ(entry->format_message(false, 0), "Disk a");
}

TEST_F(FormatMessage, OnTheNarrowPath_BytesWhateverTheCodePage) {
  qz_LOG_LogConfig::SetICUEnabled(false);
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  EXPECT_EQ(messages_.entry("漢\xFF")->format_message(false, 0), "Disk 漢\xFF");
}

TEST_F(FormatMessage, WithoutMemory_MemoryAlloc) {
  const auto entry = messages_.entry("a name that is longer than a small string");
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    EXPECT_GT(FailEveryAllocation([&] { static_cast<void>(entry->format_message(false, 0)); }), 0U);
    EXPECT_EQ(entry->format_message(false, 0), "Disk a name that is longer than a small string");
  }
}

// ---- The converter that is made once ----

TEST(ReadableMessageConverter, UnknownCodePage_ConverterTextThenConversionTexts) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    const auto entry = messages.entry("a");
    qz_LOG_LogConfig::SetCodePage("no such page");
    const DebugLogFile log(1);
    const auto render = [&] { buffer_form(*entry); };
    EXPECT_EQ(thrown_by(render), thrown<QZX_logging_internal_error>(kConverterText));
    EXPECT_EQ(log.records(), Texts({"logentry_i:2086 _qz_LOG_log_entry_imp::get_readable_message, UnicodeConverter "
                                    "construct error, codepage=no such page\n"}));
    log.clear();
    for (const char* page : {"no such page", "UTF-8", ""}) {
      qz_LOG_LogConfig::SetCodePage(page);
      EXPECT_EQ(thrown_by(render), thrown<QZX_logging_internal_error>(kConversionText)) << page;
      EXPECT_EQ(log.records(), Texts({kConversionRecord})) << page;
      log.clear();
    }
    EXPECT_EQ(entry->format_message(false, 0), "Disk a");
    qz_LOG_LogConfig::SetICUEnabled(false);
    EXPECT_EQ(buffer_form(*entry), "Disk a");
  });
}

TEST(ReadableMessageConverter, UnknownCodePageInTheShortForm_SameText) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    const auto entry = messages.entry("a");
    qz_LOG_LogConfig::SetCodePage("no such page");
    EXPECT_EQ(thrown_by([&] { entry->get_readable_message(false, 0); }),
              thrown<QZX_logging_internal_error>(kConverterText));
    EXPECT_EQ(thrown_by([&] { entry->get_readable_message(false, 0); }),
              thrown<QZX_logging_internal_error>(kConversionText));
  });
}

TEST(ReadableMessageConverter, RenderingFailsFirst_NoConverterIsMade) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    qz_LOG_LogConfig::SetCodePage("no such page");
    EXPECT_THROW(buffer_form(_qz_LOG_log_entry_imp(kBrokenId, 0)), QZX_logging_invalid_message_string);
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    EXPECT_EQ(buffer_form(*messages.entry("a")), "Disk a");
  });
}

TEST(ReadableMessageConverter, CodePageChangedAfterTheFirstMessage_FirstOneStays) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    const auto entry = messages.entry_with_template("é%_%TIMESTAMP%");
    qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
    EXPECT_EQ(buffer_form(*entry), "\xE9");
    for (const char* page : {"UTF-8", "", "no such page"}) {
      qz_LOG_LogConfig::SetCodePage(page);
      EXPECT_EQ(buffer_form(*entry), "\xE9") << page;
    }
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    EXPECT_EQ(entry->format_message(false, 0), "é");
  });
}

TEST(ReadableMessageConverter, FormatMessageFirst_DoesNotDecideTheCodePage) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    const auto entry = messages.entry_with_template("é%_%TIMESTAMP%");
    qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
    EXPECT_EQ(entry->format_message(false, 0), "\xE9");
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    EXPECT_EQ(buffer_form(*entry), "é");
  });
}

TEST(ReadableMessageConverter, NarrowMessagesFirst_DoNotDecideTheCodePage) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    const auto entry = messages.entry_with_template("é%_%TIMESTAMP%");
    qz_LOG_LogConfig::SetICUEnabled(false);
    qz_LOG_LogConfig::SetCodePage("no such page");
    EXPECT_EQ(buffer_form(*entry), "é");
    qz_LOG_LogConfig::SetICUEnabled(true);
    qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
    EXPECT_EQ(buffer_form(*entry), "\xE9");
  });
}

TEST(ReadableMessageConverter, NoCodePage_DefaultConverterOfIcu) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    const auto entry = messages.entry_with_template("é%_%TIMESTAMP%");
    EXPECT_EQ(buffer_form(*entry), "é");
    EXPECT_EQ(entry->format_message(false, 0), "é");
    qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
    EXPECT_EQ(buffer_form(*entry), "é");
    EXPECT_EQ(entry->format_message(false, 0), "\xE9");
  });
}

TEST(ReadableMessageConverter, StatefulCodePage_EveryMessageFromTheInitialState) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    const auto entry = messages.entry_with_template("漢%_%TIMESTAMP%");
    qz_LOG_LogConfig::SetCodePage("ISO-2022-JP");
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(buffer_form(*entry), "\x1B$B4A\x1B(B");
      char small[5];
      EXPECT_EQ(thrown_by([&] { entry->get_readable_message(small, 4, false, 0); }),
                thrown<QZX_logging_internal_error>(kConversionText));
    }
  });
}

}  // namespace
}  // namespace qz_test
