#include <gtest/gtest.h>

#include <string>

#include "entry/logentry_i.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/message/fresh_process.h"
#include "tests/message/readable_messages.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

constexpr const char* kVariable = "_QZ_DISABLE_READABLE_MSG";
constexpr const char* kNotSupported = "qz_LOG_LogEntry::GetMessage:  this method is not yet supported.";

class ReadableMessage : public testing::Test {
 protected:
  ReadableMessages messages_;
};

// ---- Switched off by the environment ----

class SwitchedOff : public testing::TestWithParam<const char*> {};

TEST_P(SwitchedOff, VariableSet_FixedTextAndBufferUntouched) {
  const std::string value = GetParam();
  expect_in_fresh_process([&] {
    const SetEnv variable(kVariable, value);
    const ReadableMessages messages;
    const auto entry = messages.entry("a");
    for (const bool icu : {true, false}) {
      qz_LOG_LogConfig::SetICUEnabled(icu);
      MarkedBuffer buffer(20);
      EXPECT_STREQ(entry->get_readable_message(buffer.data(), 19, false, 0), kNotSupported);
      EXPECT_TRUE(buffer.untouched());
      EXPECT_STREQ(entry->get_readable_message(nullptr, 0, false, 0), kNotSupported);
      EXPECT_STREQ(entry->get_readable_message(false, 0), "");
      EXPECT_EQ(entry->format_message(false, 0), kNotSupported);
    }
  });
}

INSTANTIATE_TEST_SUITE_P(ReadableMessage, SwitchedOff, testing::Values("", "0", "1", "yes"));

TEST(ReadableMessageSwitchedOff, TemplateThatCannotBeRendered_NothingThrown) {
  expect_in_fresh_process([] {
    const SetEnv variable(kVariable, "1");
    const ReadableMessages messages;
    const _qz_LOG_log_entry_imp entry(kBrokenId, 0);
    EXPECT_EQ(buffer_form(entry), kNotSupported);
    EXPECT_STREQ(entry.get_readable_message(false, 99), "");
    EXPECT_STREQ(_qz_LOG_log_entry_imp().get_readable_message(nullptr, -1, false, 0), kNotSupported);
  });
}

TEST(ReadableMessageSwitchedOff, SwitchedOffAndACachedText_TheFixedTextWins) {
  expect_in_fresh_process([] {
    const SetEnv variable(kVariable, "1");
    const ReadableMessages messages;
    const auto entry = messages.entry("a");
    EXPECT_STREQ(entry->get_readable_message(false, 0), "");
    EXPECT_EQ(buffer_form(*entry), kNotSupported);
  });
}

TEST(ReadableMessageSwitchedOff, VariableSetAfterTheFirstCall_NoEffect) {
  expect_in_fresh_process([] {
    const UnsetEnv none(kVariable);
    const ReadableMessages messages;
    const auto entry = messages.entry("a");
    EXPECT_EQ(buffer_form(*entry), "Disk a");
    const SetEnv variable(kVariable, "1");
    EXPECT_EQ(buffer_form(*entry), "Disk a");
    EXPECT_EQ(entry->format_message(false, 0), "Disk a");
  });
}

TEST(ReadableMessageSwitchedOff, VariableGoneAfterTheFirstCall_StaysOff) {
  expect_in_fresh_process([] {
    const ReadableMessages messages;
    const auto entry = messages.entry("a");
    {
      const SetEnv variable(kVariable, "");
      EXPECT_EQ(buffer_form(*entry), kNotSupported);
    }
    EXPECT_EQ(buffer_form(*entry), kNotSupported);
  });
}

// ---- The narrow path cuts ----

TEST_F(ReadableMessage, NarrowTwentyCharactersIntoTen_NineAndATerminator) {
  qz_LOG_LogConfig::SetICUEnabled(false);
  const auto entry = messages_.entry("0123456789abcde");  // the message has 20 characters
  MarkedBuffer buffer(12);
  EXPECT_EQ(entry->get_readable_message(buffer.data(), 10, false, 0), buffer.data());
  EXPECT_EQ(buffer.memory(), std::string("Disk 0123\0##", 12));
}

TEST_F(ReadableMessage, NarrowEverySize_CutToOneLess) {
  qz_LOG_LogConfig::SetICUEnabled(false);
  const auto entry = messages_.entry("0123456789");
  const std::string whole = "Disk 0123456789";
  for (std::size_t size = 1; size < 20; ++size) {
    MarkedBuffer buffer(size + 2);
    EXPECT_EQ(entry->get_readable_message(buffer.data(), static_cast<long>(size), false, 0), buffer.data());
    std::string expected = whole.substr(0, size - 1);
    expected.resize(size, '\0');  // a short text is filled up with zero bytes
    EXPECT_EQ(buffer.memory(), expected + "##") << size;
  }
}

TEST_F(ReadableMessage, NarrowCutInsideACharacter_BytesAsTheyStand) {
  qz_LOG_LogConfig::SetICUEnabled(false);
  const auto entry = messages_.entry("漢");
  MarkedBuffer buffer(8);
  entry->get_readable_message(buffer.data(), 7, false, 0);
  EXPECT_EQ(buffer.memory(), std::string("Disk \xE6\0#", 8));
}

TEST_F(ReadableMessage, SizeZeroOrLess_BufferReturnedUntouchedOnBothPaths) {
  const auto entry = messages_.entry("a");
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    for (const long size : {0L, -1L, -65536L}) {
      MarkedBuffer buffer(4);
      EXPECT_EQ(entry->get_readable_message(buffer.data(), size, false, 0), buffer.data());
      EXPECT_TRUE(buffer.untouched());
    }
  }
}

// ---- The ICU path does not cut ----

TEST_F(ReadableMessage, IcuSizeExact_TerminatorBehindTheSize) {
  const auto entry = messages_.entry("0123456789");
  MarkedBuffer buffer(18);
  EXPECT_EQ(entry->get_readable_message(buffer.data(), 15, false, 0), buffer.data());
  EXPECT_EQ(buffer.memory(), std::string("Disk 0123456789\0##", 18));
}

TEST_F(ReadableMessage, IcuLargerSize_TextAndTerminatorOnly) {
  const auto entry = messages_.entry("漢");
  MarkedBuffer buffer(20);
  entry->get_readable_message(buffer.data(), 18, false, 0);
  EXPECT_EQ(buffer.memory().substr(0, 9), std::string("Disk 漢\0", 9));
  EXPECT_EQ(buffer.memory().substr(18), "##");
}

TEST_F(ReadableMessage, IcuOneByteTooSmall_ConversionTextAndRecord) {
  const auto entry = messages_.entry("0123456789");
  for (const long size : {14L, 1L}) {
    const DebugLogFile log(1);
    MarkedBuffer buffer(18);
    EXPECT_EQ(thrown_by([&] { entry->get_readable_message(buffer.data(), size, false, 0); }),
              thrown<QZX_logging_internal_error>(kConversionText));
    EXPECT_EQ(log.records(), Texts({kConversionRecord}));
    EXPECT_EQ(buffer.memory().substr(static_cast<std::size_t>(size)),
              std::string(18 - static_cast<std::size_t>(size), '#'));
  }
}

TEST_F(ReadableMessage, IcuTooSmallAtLevel0_NoRecord) {
  const DebugLogFile log(0);
  char buffer[2];
  EXPECT_EQ(thrown_by([&] { messages_.entry("a")->get_readable_message(buffer, 1, false, 0); }),
            thrown<QZX_logging_internal_error>(kConversionText));
  EXPECT_FALSE(log.exists());
}

TEST_F(ReadableMessage, IcuEmptyMessage_TerminatorOnly) {
  const auto entry = messages_.entry_with_template("text without a reference");
  MarkedBuffer buffer(4);
  EXPECT_EQ(entry->get_readable_message(buffer.data(), 1, false, 0), buffer.data());
  EXPECT_EQ(buffer.memory(), std::string("\0###", 4));
}

// ---- Which message ----

TEST_F(ReadableMessage, IndexAndDefault_PassedToTheRenderer) {
  const auto entry = messages_.entry("a");
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    EXPECT_EQ(buffer_form(*entry, false, 1), "Selected a");
    EXPECT_EQ(buffer_form(*entry, true, 1), "Disk a");
    EXPECT_EQ(entry->format_message(false, 1), "Selected a");
    EXPECT_EQ(entry->format_message(true, 1), "Disk a");
  }
}

TEST_F(ReadableMessage, RenderingFails_SameExceptionFromEveryForm) {
  const _qz_LOG_log_entry_imp entry(kBrokenId, 0);
  const char* const text =
      "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  unable to find attribute value for "
      "\"Missing\"!";
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    EXPECT_EQ(thrown_by([&] { buffer_form(entry); }), thrown<QZX_logging_invalid_message_string>(text));
    EXPECT_EQ(thrown_by([&] { entry.get_readable_message(false, 0); }),
              thrown<QZX_logging_invalid_message_string>(text));
    EXPECT_EQ(thrown_by([&] { entry.format_message(false, 0); }), thrown<QZX_logging_invalid_message_string>(text));
  }
}

TEST_F(ReadableMessage, EntryWithoutDefinition_NotInitializedTextFromEveryForm) {
  const _qz_LOG_log_entry_imp entry;
  const char* const text = "_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized";
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    EXPECT_EQ(thrown_by([&] { buffer_form(entry); }), thrown<QZX_logging_misc>(text));
    EXPECT_EQ(thrown_by([&] { entry.get_readable_message(false, 0); }), thrown<QZX_logging_misc>(text));
    EXPECT_EQ(thrown_by([&] { entry.format_message(false, 0); }), thrown<QZX_logging_misc>(text));
  }
}

TEST_F(ReadableMessage, DefinitionsCleared_EntryStillRenders) {
  const auto entry = messages_.entry("a");
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_EQ(buffer_form(*entry), "Disk a");
  EXPECT_EQ(entry->format_message(false, 1), "Selected a");
}

// ---- The cache ----

TEST_F(ReadableMessage, ShortForm_EmptyTextAfterRendering) {
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    EXPECT_STREQ(messages_.entry("a")->get_readable_message(false, 0), "");
  }
}

TEST_F(ReadableMessage, BufferFormAfterTheShortForm_CachedTextAndBufferUntouched) {
  const auto entry = messages_.entry("a");
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    entry->set_log_level(1);
    entry->get_readable_message(false, 0);
    for (int i = 0; i < 2; ++i) {
      MarkedBuffer buffer(20);
      const char* const text = entry->get_readable_message(buffer.data(), 19, false, 0);
      EXPECT_STREQ(text, "");
      EXPECT_NE(text, buffer.data());
      EXPECT_TRUE(buffer.untouched());
    }
    EXPECT_STREQ(entry->get_readable_message(nullptr, 0, false, 0), "");
  }
}

TEST_F(ReadableMessage, OtherArgumentsThanCached_Rendered) {
  const auto entry = messages_.entry("a");
  entry->get_readable_message(false, 0);
  EXPECT_EQ(buffer_form(*entry, true, 0), "Disk a");
  EXPECT_EQ(buffer_form(*entry, false, 1), "Selected a");
  EXPECT_EQ(buffer_form(*entry, false, 0), "");  // the buffer form has cached nothing
  entry->get_readable_message(false, 1);
  EXPECT_EQ(buffer_form(*entry, false, 1), "");
  EXPECT_EQ(buffer_form(*entry, false, 0), "Disk a");
}

TEST_F(ReadableMessage, BufferFormAlone_RendersEveryTime) {
  const auto entry = messages_.entry("a");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(buffer_form(*entry), "Disk a");
}

TEST_F(ReadableMessage, NewEntry_NothingCachedForTheInitialArguments) {
  const auto entry = messages_.entry("a");
  EXPECT_EQ(buffer_form(*entry, true, 0), "Disk a");
  EXPECT_EQ(buffer_form(*entry, false, 0), "Disk a");
}

TEST_F(ReadableMessage, EveryChangeAfterTheShortForm_RenderedAgain) {
  const auto entry = messages_.entry("a");
  const auto expect_rendered_after = [&](const char* what, const std::string& expected, auto&& change) {
    entry->get_readable_message(false, 0);
    EXPECT_EQ(buffer_form(*entry), "") << what;
    change();
    EXPECT_EQ(buffer_form(*entry), expected) << what;
  };
  expect_rendered_after("replaced", "Disk b", [&] { entry->add_attrib_mbstr("Name", "b", true); });
  expect_rendered_after("level", "Disk b", [&] { entry->set_log_level(5); });
  expect_rendered_after("ID", "Disk b", [&] { entry->set_entry_id(kId); });
  expect_rendered_after("removed", "Disk ", [&] { entry->remove_attrib("Name"); });
  expect_rendered_after("cleared", "Disk ", [&] { entry->clear_attribs(true); });
}

TEST_F(ReadableMessage, ShortFormFails_NothingIsCached) {
  const auto entry = messages_.entry("a");
  EXPECT_EQ(thrown_by([&] { entry->get_readable_message(false, 7); }),
            thrown<QZX_logging_invalid_message_string>(
                "<QZX_logging_invalid_message_string> Invalid selector message index specified."));
  EXPECT_EQ(buffer_form(*entry, false, 0), "Disk a");
  EXPECT_EQ(thrown_by([&] { buffer_form(*entry, false, 7); }),
            thrown<QZX_logging_invalid_message_string>(
                "<QZX_logging_invalid_message_string> Invalid selector message index specified."));
}

TEST_F(ReadableMessage, ShortFormFailsAfterASuccess_TheCachedRequestStays) {
  const auto entry = messages_.entry("a");
  entry->get_readable_message(false, 0);
  EXPECT_THROW(entry->get_readable_message(false, 7), QZX_logging_invalid_message_string);
  EXPECT_EQ(buffer_form(*entry, false, 0), "");
}

TEST_F(ReadableMessage, ShortFormAgain_DoesNotRender) {
  const auto entry = messages_.entry("a");
  entry->get_readable_message(false, 0);
  EXPECT_THROW(qz_LOG_LogConfig::SetMessageCatalogPath("/nothing"), QZX_logging_missing_resource);
  EXPECT_STREQ(entry->get_readable_message(false, 0), "");
  EXPECT_THROW(entry->get_readable_message(true, 0), QZX_logging_missing_resource);
}

TEST_F(ReadableMessage, ShortFormThroughIcu_65536BytesAreTheLimit) {
  const auto entry = messages_.entry_with_template(std::string(65536, 'x') + "%_%TIMESTAMP%");
  EXPECT_STREQ(entry->get_readable_message(false, 0), "");
  const auto longer = messages_.entry_with_template(std::string(65537, 'x') + "%_%TIMESTAMP%");
  EXPECT_EQ(thrown_by([&] { longer->get_readable_message(false, 0); }),
            thrown<QZX_logging_internal_error>(kConversionText));
  qz_LOG_LogConfig::SetICUEnabled(false);
  EXPECT_STREQ(longer->get_readable_message(false, 0), "");
}

// ---- The public class ----

TEST_F(ReadableMessage, PublicForms_ForwardToTheImplementation) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttribMBStr("Name", "a");
  char buffer[21];
  EXPECT_EQ(entry.GetReadableMessage(buffer, 20, false, 1), buffer);
  EXPECT_STREQ(buffer, "Selected a");
  EXPECT_EQ(entry.FormatMessage(), "Disk a");
  EXPECT_EQ(entry.FormatMessage(false, 1), "Selected a");
  EXPECT_EQ(entry.FormatMessage(true, 1), "Disk a");
  EXPECT_EQ(entry.FormatMessage(true), "Disk a");
  EXPECT_STREQ(entry.GetReadableMessage(false, 0), "");
  EXPECT_STREQ(static_cast<const char*>(entry), "");
  EXPECT_STREQ(entry.GetReadableMessage(buffer, 20, false, 0), "");
  EXPECT_EQ(entry.FormatMessage(), "Disk a");
}

TEST_F(ReadableMessage, TextOperator_AsTheShortFormWithoutIndex) {
  const qz_LOG_LogEntry entry(kBrokenId, 0);
  EXPECT_THROW(static_cast<void>(static_cast<const char*>(entry)), QZX_logging_invalid_message_string);
}

}  // namespace
}  // namespace qz_test
