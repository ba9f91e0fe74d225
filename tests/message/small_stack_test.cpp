#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <string>
#include <vector>

#include "qzlog/entry_filt.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/message/fresh_process.h"
#include "tests/message/icu_templates.h"
#include "tests/support/small_stack.h"

using namespace qzlog;

namespace qz_test {
namespace {

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kForRendering = 256 * kKiB;
constexpr std::size_t kForAdding = 128 * kKiB;
constexpr std::size_t kForReading = 64 * kKiB;
constexpr std::size_t kLongText = 64 * kKiB;

std::string repeated(const std::string& text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

std::string nested(const std::string& begin, const std::string& middle, const std::string& end, std::size_t levels) {
  return repeated(begin, levels) + middle + repeated(end, levels);
}

/// Renders on a small stack, where what is too deep has to be refused before ICU sees it.
class SmallStack : public IcuTemplates {
 protected:
  SmallStack() {
    entry_.add_attrib_4("TypeSInt4", -1234567);
    entry_.add_attrib_float8("TypeFloat", 1234.5678);
    entry_.add_attrib_str("TypeChar32", "a text", true);
    entry_.add_attrib_mbstr("TypeMBChar64", "é", true);
    qz_Time time;
    EXPECT_TRUE(time.set_to_string_value("2026-11-21 08:15:30"));
    entry_.add_attrib_time("TypeTimestamp", time);
  }
  std::string rendered(const std::string& text) {
    definition_.set_default_msg_text(text.c_str());
    std::string result;
    on_small_stack(kForRendering, [&] { result = to_utf8(message()); });
    return result;
  }
  void expect_refused(const std::string& text) {
    EXPECT_EQ(thrown_by([&] { rendered(text); }), thrown<QZX_logging_internal_error>(kPatternText))
        << text.substr(0, 100) << " of " << text.size() << " bytes";
  }
};

TEST_F(SmallStack, NestingHiddenFromACountOfBraces_Refused) {
  // A choice ends its messages at '|', so an apostrophe quotes before it too, and with it the brace.
  const std::string level = "{0,choice,0#'|}'";
  for (const std::size_t size : {std::size_t{2600}, kLongText})
    expect_refused(repeated(level, size / level.size()) + "%_%TIMESTAMP%");
  for (const std::size_t levels : {51U, 160U, 4000U}) {
    expect_refused("%d%TypeSInt4%" + nested(level, "x", "}", levels) + "%_%TIMESTAMP%");
    expect_refused("%d%TypeSInt4%" + nested("{0,plural,other{'#}}'", "x", "}}", levels) + "%_%TIMESTAMP%");
    expect_refused("%d%TypeSInt4%" + nested("{0,SelectOrdinal,=1{'#}}'} other{", "x", "}}", levels) + "%_%TIMESTAMP%");
  }
}

TEST_F(SmallStack, NestingAtTheLimit_Rendered) {
  const std::string number = "%d%TypeSInt4%";
  EXPECT_EQ(rendered(number + nested("{0,choice,-2000000#", "x", "}", 50) + "%_%TIMESTAMP%"), "-1234567x");
  EXPECT_EQ(rendered(number + nested("{0,choice,-2000000#'|'", "{0}", "}", 49) + "%_%TIMESTAMP%"),
            "-1234567" + repeated("|", 49) + "-1,234,567");
  EXPECT_EQ(rendered(number + nested("{0,plural,other{#", "x", "}}", 50) + "%_%TIMESTAMP%"),
            "-1234567" + repeated("-1,234,567", 50) + "x");
  EXPECT_EQ(rendered(number + nested("{0,selectordinal,offset:1 other{#", "x", "}}", 49) + "%_%TIMESTAMP%"),
            "-1234567" + repeated("-1,234,568", 49) + "x");
  EXPECT_EQ(rendered("%s%TypeChar32%" + nested("{0,select,other{", "{0}", "}}", 49) + "%_%TIMESTAMP%"), "a texta text");
}

TEST_F(SmallStack, LongTexts_Rendered) {
  const std::string text(kLongText, 'x');
  EXPECT_EQ(rendered(text + "%_%TIMESTAMP%"), text);
  EXPECT_EQ(rendered(repeated("'{' it''s ", kLongText / 10) + "%_%TIMESTAMP%"), repeated("{ it's ", kLongText / 10));
  EXPECT_EQ(rendered("%d%TypeSInt4%" + repeated("{0,plural,other{#}}", kLongText / 19) + "%_%TIMESTAMP%"),
            "-1234567" + repeated("-1,234,567", kLongText / 19));
  expect_refused(std::string(kLongText, '{') + "%_%TIMESTAMP%");
  expect_refused(repeated("{0,select,other", kLongText / 15) + "%_%TIMESTAMP%");
}

/// The formats of references and what a text can ask of ICU, whose deepest calls are those of a locale's first use.
constexpr const char* kReferences =
    "%s%TypeMBChar64% %d%TypeSInt4% %f%TypeFloat% %C%TypeSInt4% %P%TypeFloat% %D%TypeTimestamp% %T%TypeTimestamp% ";
constexpr const char* kArguments =
    "{2,spellout} {1,ordinal} {1,duration} {5,date,full} {6,time,full} {6,date,::yyyyMMMMdjmmssz} {2} {5} "
    "{1,number,::compact-long currency/EUR .00} {2,number,#,##0.00;(#)} {1,plural,one{#}few{# few}other{# other}} "
    "{1,selectordinal,one{#st}other{#th}}";

TEST_F(SmallStack, EveryFormatInEveryLocale_RenderedAtAnyNesting) {
  entry_.add_attrib_float8("TypeFloat", -999999999999999.75);
  const std::string end = "%_%TIMESTAMP%";
  const std::string flat = kReferences + std::string(kArguments) + end;
  const std::string deep = kReferences + nested("{1,choice,-2000000#", kArguments, "}", 48) + end;
  int count = 0;
  const icu::Locale* const locales = icu::Locale::getAvailableLocales(count);
  ASSERT_GT(count, 600);
  for (int i = 0; i < count; ++i) {
    SCOPED_TRACE(locales[i].getName());
    RenderingSettings::set_icu_locale(locales[i].getName());
    const std::string& text = i % 2 == 0 ? flat : deep;
    ASSERT_EQ(rendered(text), to_utf8(oracle_message(text, entry_, locales[i])));
  }
}

TEST_F(SmallStack, FirstMessageOfAProcess_Rendered) {
  expect_in_fresh_process([] {
    on_small_stack(kForRendering, [] {
      _qz_LOG_log_definition definition;
      definition.add_attr_info("N", TypeSInt4, false, nullptr);
      definition.set_default_msg_text("{0,spellout} {0,date,full} %d%N% %D%TIMESTAMP%");
      const RenderingSettings settings;
      settings.load({{.id = 1, .attributes = {{"N", TypeSInt4}}}});
      _qz_LOG_log_entry_imp entry(1, 0);
      entry.add_attrib_4("N", 7);
      EXPECT_EQ(to_utf8(_qz_LOG_log_message::get_message(entry, &definition, false, 0)).substr(0, 6), "seven ");
    });
  });
}

TEST_F(SmallStack, EveryFormOfTheMessage_Rendered) {
  definition_.set_default_msg_text("unused");
  rendering_.settings().load({{.id = 5,
                               .message_text = "%s%TypeMBChar64%: %d%TypeSInt4% %C%TypeSInt4%",
                               .attributes = attributes_of_every_type()}});
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    for (const char* const code_page : {"", "UTF-8", "Shift_JIS", "ISO-2022-JP"}) {
      qz_LOG_LogConfig::SetCodePage(code_page);
      on_small_stack(kForRendering, [] {
        _qz_LOG_log_entry_imp entry(5, 0);
        entry.add_attrib_mbstr("TypeMBChar64", "text", true);
        entry.add_attrib_4("TypeSInt4", 7);
        std::vector<char> buffer(65537);
        entry.get_readable_message(buffer.data(), 65536, false, 0);
        const std::string message = entry.format_message(false, 0);
        EXPECT_EQ(message.substr(0, 9), "text: 7 $");
        EXPECT_EQ(buffer.data(), message);
        EXPECT_STREQ(entry.get_readable_message(false, 0), "");  // its scratch buffer is 64 KiB
      });
    }
  }
}

TEST_F(SmallStack, ShortFormOfTheDeepestMessage_Rendered) {
  const std::string deepest = "%d%TypeSInt4%" + nested("{0,choice,-2000000#", "{0}", "}", 49) + "%_%TIMESTAMP%";
  rendering_.settings().load({{.id = 5, .message_text = deepest, .attributes = {{"TypeSInt4", TypeSInt4}}}});
  on_small_stack(kForRendering, [] {
    qz_LOG_LogEntry entry(5, 0);
    entry.AddAttrib4("TypeSInt4", 7);
    EXPECT_STREQ(entry.GetReadableMessage(false, 0), "");  // its scratch buffer is 64 KiB
    EXPECT_EQ(entry.FormatMessage(), "77");
  });
}

/// A value for each attribute of attributes_of_every_type, the texts longer than their types allow.
void add_every_type(qz_LOG_LogEntry& entry, const std::string& text) {
  for (const char* const size : {"32", "64", "128", "256", "1K", "2K"}) {
    entry.AddAttribStr(("TypeChar" + std::string(size)).c_str(), text.c_str());
    entry.AddAttribMBStr(("TypeMBChar" + std::string(size)).c_str(), text.c_str());
  }
  entry.AddAttribBool("TypeBool", true);
  entry.AddAttrib1u("TypeUInt1", 1);
  entry.AddAttrib2("TypeSInt2", -2);
  entry.AddAttrib4u("TypeUInt4", 4);
  entry.AddAttribFloat8("TypeFloat", 1.5);
  entry.AddAttribTime("TypeTimestamp", qz_Time());
}

TEST_F(SmallStack, Adds_HoldOn128KiB) {
  static constexpr std::size_t kCutAndEscaped = 2048 + 2048 / 7;  // each line break then takes two characters
  rendering_.settings().load({{.id = 5, .attributes = attributes_of_every_type()}});
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  for (const char* const code_page : {"", "UTF-8", "Shift_JIS", "ISO-2022-JP"}) {
    qz_LOG_LogConfig::SetCodePage(code_page);
    on_small_stack(kForAdding, [] {
      qz_LOG_LogEntry entry(5, 0);
      add_every_type(entry, repeated("a text\n", 2000));
      EXPECT_EQ(std::string(entry.GetAttribStr("TypeChar2K")).size(), kCutAndEscaped);
      EXPECT_EQ(std::string(entry.GetAttribMBStr("TypeMBChar2K")).size(), kCutAndEscaped);
    });
  }
}

TEST_F(SmallStack, FirstLookupFilterAndReads_HoldOn64KiB) {
  rendering_.settings().load({{.id = 5, .mask = 1, .attributes = attributes_of_every_type()}});
  const std::string source = rendering_.settings().folder().write("log.conf", "[app]\nLogLevelLow = 1\n");
  on_small_stack(kForReading, [&] {
    qz_LOG_LogEntry entry(5, 3);
    entry.AddAttrib4u("TypeUInt4", 4);
    const _qz_LOG_entry_filter filter = {nullptr, nullptr, 1, 0, 9, "app", false, false};
    EXPECT_TRUE(filter.check_entry(entry));
    qz_LOG_LogConfig::SetConfigurationSource(source.c_str(), QZ_CONFIGURATION_FILE);
    EXPECT_TRUE(filter.check_entry(entry));
    EXPECT_EQ(entry.GetAttrib4u("TypeUInt4"), 4U);
    qz_AttributeType type = TypeUnknown;
    entry.CheckAttribute("TypeChar32", type);
    EXPECT_EQ(type, TypeChar32);
    const qz_LOG_LogEntry copy(entry);
    EXPECT_EQ(copy.GetAttrib4u("TypeUInt4"), 4U);
  });
}

}  // namespace
}  // namespace qz_test
