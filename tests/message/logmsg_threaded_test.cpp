#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "message/logmsg.h"
#include "message/logmsg_tokens.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/message/fresh_process.h"
#include "tests/message/message_fixture.h"

namespace qz_test {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 40;
constexpr unsigned kIds = 12;

/// Runs `work(thread number)` in many threads that start together.
void in_threads(const std::function<void(int)>& work) {
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      work(number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

/// Entries with different templates, of which each shows text, numbers and a time.
std::vector<LdfEntry> definitions() {
  std::vector<LdfEntry> entries;
  for (unsigned id = 1; id <= kIds; ++id) {
    const std::string number = std::to_string(id);
    entries.push_back({.id = id,
                       .message_id = "greeting",
                       .message_text = "é" + number + " %s%Name% %d%Count% %C%Count% %P%Count% %f%Size% %D%TIMESTAMP%",
                       .attributes = {{"Name", TypeMBChar64}, {"Count", TypeUInt4}, {"Size", TypeFloat}}});
  }
  return entries;
}

void fill(_qz_LOG_log_entry_imp& entry, int number) {
  entry.add_attrib_mbstr("Name", ("名前 " + std::to_string(number)).c_str(), true);
  entry.add_attrib_4u("Count", static_cast<unsigned>(number));
  entry.add_attrib_float8("Size", number + 0.5);
}

/// Every message of one thread, on both paths, in the order in which the thread asks for them.
std::vector<std::string> messages_of(int number) {
  std::vector<std::string> messages;
  for (int round = 0; round < kRounds; ++round) {
    _qz_LOG_log_entry_imp entry(static_cast<unsigned>(number + round) % kIds + 1, 0);
    fill(entry, number);
    char buffer[1025];
    messages.emplace_back(entry.get_readable_message(buffer, 1024, false, 0));
    messages.push_back(entry.format_message(false, 0));
    messages.emplace_back(_qz_LOG_log_message::get_qzString_message(entry, entry.get_definition(), false, 0).c_str());
    messages.emplace_back(entry.get_readable_message(false, 0));
  }
  return messages;
}

void expect_same_as_alone(const std::vector<std::vector<std::string>>& found) {
  for (int number = 0; number < kThreads; ++number) {
    EXPECT_EQ(found[static_cast<std::size_t>(number)], messages_of(number)) << number;
  }
}

TEST(ThreadedRendering, FirstUseByManyThreads_MessagesAsOfOneThread) {
  expect_in_fresh_process([] {
    const RenderingSettings settings;
    settings.load(definitions());
    std::vector<std::vector<std::string>> found(kThreads);
    in_threads([&](int number) { found[static_cast<std::size_t>(number)] = messages_of(number); });
    EXPECT_EQ(found[3][0].substr(0, 10), "é4 名前");
    expect_same_as_alone(found);
  });
}

TEST(ThreadedRendering, CatalogAndLocale_MessagesAsOfOneThread) {
  expect_in_fresh_process([] {
    const RenderingSettings settings;
    settings.load(definitions());
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
    qz_LOG_LogConfig::SetMessageCatalogPath(QZLOG_TEST_CATALOGS "/whole");
    std::vector<std::vector<std::string>> found(kThreads);
    in_threads([&](int number) { found[static_cast<std::size_t>(number)] = messages_of(number); });
    EXPECT_EQ(found[3][0], "Grüß Gott 名前 3");
    expect_same_as_alone(found);
  });
}

TEST(ThreadedRendering, CodePageOtherThanTheTexts_MessagesAsOfOneThread) {
  expect_in_fresh_process([] {
    const RenderingSettings settings;
    settings.load(definitions());
    qz_LOG_LogConfig::SetCodePage("ISO-2022-JP");
    std::vector<std::vector<std::string>> found(kThreads);
    in_threads([&](int number) { found[static_cast<std::size_t>(number)] = messages_of(number); });
    expect_same_as_alone(found);
  });
}

TEST(ThreadedRendering, SwitchedOff_FixedTextInEveryThread) {
  expect_in_fresh_process([] {
    const SetEnv variable("_QZ_DISABLE_READABLE_MSG", "1");
    const RenderingSettings settings;
    settings.load(definitions());
    std::vector<std::string> found(kThreads);
    in_threads([&](int number) {
      char buffer[17];
      const _qz_LOG_log_entry_imp entry(1, 0);
      found[static_cast<std::size_t>(number)] = entry.get_readable_message(buffer, 16, false, 0);
    });
    for (const std::string& text : found) {
      EXPECT_EQ(text, "qz_LOG_LogEntry::GetMessage:  this method is not yet supported.");
    }
  });
}

TEST(ThreadedRendering, UnknownCodePageInManyThreads_OneConverterTextAndConversionTexts) {
  expect_in_fresh_process([] {
    const RenderingSettings settings;
    settings.load(definitions());
    qz_LOG_LogConfig::SetCodePage("no such page");
    std::atomic<int> converter_texts{0};
    std::atomic<int> conversion_texts{0};
    in_threads([&](int) {
      const _qz_LOG_log_entry_imp entry(1, 0);
      char buffer[65];
      try {
        entry.get_readable_message(buffer, 64, false, 0);
      } catch (const QZX_logging_internal_error& error) {
        const std::string text = error.get_message();
        converter_texts += text == "_qz_LOG_log_message::get_readable_message:  UnicodeConverter constructor failed!";
        conversion_texts += text == "_qz_LOG_log_message::get_readable_message:  MessageFormat::format() failed!";
      }
    });
    EXPECT_EQ(converter_texts, 1);
    EXPECT_EQ(conversion_texts, kThreads - 1);
  });
}

TEST(ThreadedTokenizing, FirstUseByManyThreads_NamesConverted) {
  expect_in_fresh_process([] {
    std::atomic<unsigned> references{0};
    in_threads([&](int) {
      for (int round = 0; round < kRounds; ++round) {
        _qz_LOG_msg_token_list list;
        _qz_LOG_log_message::_tokenize_string(u"%s%é漢% and %d%Größe%", list);
        references += _qz_LOG_log_message::_get_number_of_attributes(list);
      }
    });
    EXPECT_EQ(references, 2U * kThreads * kRounds);
  });
}

TEST(ThreadedConversion, DifferentCodePages_EachItsOwn) {
  const struct {
    const char* code_page;
    const char* bytes;
    const char* utf8;
  } pairs[] = {{"ISO-8859-1", "\xE9", "é"}, {"Shift_JIS", "\x8A\xBF", "漢"}, {"ISO-2022-JP", "\x1B$B4A\x1B(B", "漢"}};
  std::atomic<int> good{0};
  in_threads([&](int number) {
    const auto& pair = pairs[number % 3];
    for (int round = 0; round < kRounds; ++round) {
      char target[33];
      unsigned size = 32;
      good += qz_LOG_LogEntry::ConvertToUTF8(pair.bytes, target, size, pair.code_page) == 1 &&
              std::string(target) == pair.utf8;
      size = 32;
      good += qz_LOG_LogEntry::ConvertFromUTF8(pair.utf8, target, size, pair.code_page) == 1 &&
              std::string(target) == pair.bytes;
    }
  });
  EXPECT_EQ(good, 2 * kThreads * kRounds);
}

}  // namespace
}  // namespace qz_test
