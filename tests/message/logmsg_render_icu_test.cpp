#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <csignal>
#include <limits>
#include <string>

#include "message/logmsg.h"
#include "qzlog/logcfg.h"
#include "tests/message/fresh_process.h"
#include "tests/message/message_fixture.h"
#include "tests/message/message_oracle.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

constexpr const char* kPatternText =
    "<QZX_logging_internal_error> _qz_LOG_log_message::get_message:  MessageFormat constructor failed! most caused by "
    "number of attribute in message txt more than 9. (now ICU only support 0-9 tags)";

class RenderIcu : public testing::Test {
 protected:
  /// What the library gives is what a formatter made on the spot gives.
  void expect_as_oracle(const std::string& message_template, const char* locale = "en_US") {
    EXPECT_EQ(rendering_.icu(message_template), to_utf8(oracle_message(message_template, entry_, icu::Locale(locale))))
        << message_template << " in " << locale;
  }
  void expect_pattern_failure(const std::string& message_template) {
    EXPECT_EQ(thrown_by([&] { rendering_.icu(message_template); }), thrown<QZX_logging_internal_error>(kPatternText))
        << message_template;
  }

  MessageRendering rendering_;
  _qz_LOG_log_entry_imp& entry_ = rendering_.entry();
};

std::string references(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "%d%TypeUInt4%,";
  return text;
}

TEST_F(RenderIcu, Integers_Texts) {
  const struct {
    int value;
    const char* text;
  } cases[] = {{0, "0 0 $0.00 0%"},
               {3, "3 3 $3.00 300%"},
               {-1, "-1 -1 -$1.00 -100%"},
               {1234567, "1234567 1234567 $1,234,567.00 123,456,700%"},
               {INT_MAX, "2147483647 2147483647 $2,147,483,647.00 214,748,364,700%"},
               {INT_MIN, "-2147483648 -2147483648 -$2,147,483,648.00 -214,748,364,800%"}};
  for (const auto& c : cases) {
    entry_.add_attrib_4("TypeSInt4", c.value);
    EXPECT_EQ(rendering_.icu("%d%TypeSInt4% %u%TypeSInt4% %C%TypeSInt4% %P%TypeSInt4%"), c.text);
  }
}

TEST_F(RenderIcu, NarrowIntegers_WidenedBySign) {
  entry_.add_attrib_1u("TypeUInt1", 255);
  entry_.add_attrib_1("TypeSInt1", static_cast<char>(-1));
  entry_.add_attrib_2u("TypeUInt2", 65535);
  entry_.add_attrib_2("TypeSInt2", -1);
  EXPECT_EQ(rendering_.icu("%d%TypeUInt1% %d%TypeSInt1% %d%TypeUInt2% %d%TypeSInt2%"), "255 -1 65535 -1");
}

TEST_F(RenderIcu, Unsigned32_ReadAsSigned) {
  entry_.add_attrib_4u("TypeUInt4", 4294967295U);
  EXPECT_EQ(rendering_.icu("%d%TypeUInt4% %u%TypeUInt4% %C%TypeUInt4% %P%TypeUInt4%"), "-1 -1 -$1.00 -100%");
}

TEST_F(RenderIcu, Floats_AsTheOracle) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double values[] = {0.0,     -0.0,     3.5,  -3.5,      0.0005,   1e-300,    5e-324,       DBL_MIN,
                           DBL_MAX, -DBL_MAX, 1e15, 1234.5678, infinity, -infinity, std::nan(""), -std::nan("")};
  for (const double value : values) {
    entry_.add_attrib_float8("TypeFloat", value);
    expect_as_oracle("%f%TypeFloat% %C%TypeFloat% %P%TypeFloat%");
  }
}

TEST_F(RenderIcu, FloatTexts_Literally) {
  entry_.add_attrib_float8("TypeFloat", -1234.5678);
  EXPECT_EQ(rendering_.icu("%f%TypeFloat% %C%TypeFloat% %P%TypeFloat%"), "-1,234.568 -$1,234.57 -123,457%");
}

TEST_F(RenderIcu, Texts_TakenAsTheyAre) {
  entry_.add_attrib_str("TypeChar32", "a{0}'%d% ''", true);
  entry_.add_attrib_mbstr("TypeMBChar64", "漢字 {1} 😀", true);
  EXPECT_EQ(rendering_.icu("<%s%TypeChar32%|%s%TypeMBChar64%"), "<a{0}'%d% ''|漢字 {1} 😀");
}

TEST_F(RenderIcu, TextsOfACodePage_DecodedWithIt) {
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  entry_.add_attrib_str("TypeChar32", "Gr\xFC\xDF", true);
  entry_.add_attrib_mbstr("TypeMBChar64", "\xE9t\xE9", true);
  EXPECT_EQ(rendering_.icu("%s%TypeChar32% %s%TypeMBChar64%"), "Grüß été");
  qz_LOG_LogConfig::SetCodePage("Shift_JIS");
  entry_.add_attrib_mbstr("TypeMBChar64", "\x8A\xBF\x8E\x9A", true);
  EXPECT_EQ(rendering_.icu("%s%TypeMBChar64%"), "漢字");
}

TEST_F(RenderIcu, TextsWithoutACodePage_DecodedWithTheDefaultConverter) {
  entry_.add_attrib_mbstr("TypeMBChar64", "漢字", true);
  EXPECT_EQ(rendering_.icu("é %s%TypeMBChar64%"), "é 漢字");
  entry_.add_attrib_mbstr("TypeMBChar64", "a\xFF", true);
  EXPECT_EQ(rendering_.icu("%s%TypeMBChar64%"), "a\uFFFD");
}

TEST_F(RenderIcu, TemplateText_DecodedWithTheDefaultConverterWhateverTheCodePage) {
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  EXPECT_EQ(rendering_.icu("漢é%_%TIMESTAMP%"), "漢é");
}

TEST_F(RenderIcu, UnknownCodePage_TextsAreEmpty) {
  qz_LOG_LogConfig::SetCodePage("no such page");
  // Stored under the byte limit of the narrow path: no converter is needed for that.
  qz_LOG_LogConfig::SetICUEnabled(false);
  entry_.add_attrib_mbstr("TypeMBChar64", "abc", true);
  EXPECT_EQ(rendering_.icu("<%s%TypeMBChar64%>%_%TIMESTAMP%"), "<>");
}

// ---- Literal text is part of an ICU pattern ----

TEST_F(RenderIcu, BracesAndApostrophes_AsPatternsTreatThem) {
  entry_.add_attrib_str("TypeChar32", "x", true);
  entry_.add_attrib_4u("TypeUInt4", 2);
  const struct {
    const char* message_template;
    const char* message;
  } cases[] = {
      {"It's %s%TypeChar32%", "It's x"},
      {"It''s %s%TypeChar32%", "It's x"},
      {"'{'%s%TypeChar32%'}'%_%TIMESTAMP%", "{x}"},
      {"'{0}' %s%TypeChar32%", "{0} x"},
      {"'{{}}' %s%TypeChar32%", "{{}} x"},
      {"} %s%TypeChar32%", "} x"},
      {"{0}{0} %s%TypeChar32%", "xx x"},
      {"{1} %s%TypeChar32%", "{1} x"},
      {"{name} %s%TypeChar32%", "x x"},
      {"{ 0 } %s%TypeChar32%", "x x"},
      {"'{ open %s%TypeChar32%", "{ open {0}"},
      {"{0,number,percent} %d%TypeUInt4%", "200% 2"},
      {"{0,plural,one{one file}other{# files}} %d%TypeUInt4%", "2 files 2"},
      {"{0,choice,0#none|1#one|1<many} %d%TypeUInt4%", "many 2"},
      {"{0,select,x{an x}other{another}} %s%TypeChar32%", "an x x"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(rendering_.icu(c.message_template), c.message) << c.message_template;
    expect_as_oracle(c.message_template);
  }
}

TEST_F(RenderIcu, ReferencesInsideAPluralText_NestedPattern) {
  entry_.add_attrib_4u("TypeUInt4", 2);
  entry_.add_attrib_str("TypeChar32", "disk", true);
  EXPECT_EQ(rendering_.icu("{0,plural,one{a}other{%d%TypeUInt4% on %s%TypeChar32%}}%_%TIMESTAMP%"), "2 on disk");
}

TEST_F(RenderIcu, ArgumentOfADroppedReference_DefaultValue) {
  entry_.add_attrib_str("TypeChar32", "x", true);
  // Two formats, one value: the second argument is there and reads 0.
  EXPECT_EQ(rendering_.icu("%x%TypeUInt4%{1} %s%TypeChar32%"), "0 x");
  EXPECT_EQ(rendering_.icu("%x%TypeUInt4%{2} %s%TypeChar32%"), "{2} x");
}

TEST_F(RenderIcu, PatternThatIcuRejects_Text) {
  for (const char* text : {"{ %s%TypeChar32%", "a{%s%TypeChar32%}", "{0 %s%TypeChar32%", "{0,%s%TypeChar32%",
                           "{0,nonsense} %s%TypeChar32%", "{} %s%TypeChar32%", "{-1} %s%TypeChar32%",
                           "{0,plural,} %d%TypeUInt4%", "{0,plural,one{x}} %d%TypeUInt4%"}) {
    expect_pattern_failure(text);
  }
}

TEST_F(RenderIcu, PatternThatIcuRejects_FailsEveryTimeAndOthersStillRender) {
  for (int i = 0; i < 3; ++i) {
    expect_pattern_failure("{ %d%TypeUInt4%");
    EXPECT_EQ(rendering_.icu("a %d%TypeUInt4%"), "a 0");
  }
}

std::string nested(int depth) {
  std::string text = "%s%TypeChar32%";
  for (int i = 0; i < depth; ++i) text += "{0,select,other{";
  text += 'x';
  for (int i = 0; i < depth; ++i) text += "}}";
  return text + " %_%TIMESTAMP%";
}

TEST_F(RenderIcu, PatternNestedBeyondAnyMessage_TextInsteadOfAnExhaustedStack) {
  EXPECT_EQ(rendering_.icu(nested(40)), "x ");
  expect_pattern_failure(nested(51));
  expect_pattern_failure(nested(100'000));
}

TEST_F(RenderIcu, ManyQuotedBraces_AreNoNesting) {
  const std::string braces(1000, '{');
  EXPECT_EQ(rendering_.icu("'" + braces + "' it''s '" + braces + "'%s%TypeChar32%"), braces + " it's " + braces);
}

TEST_F(RenderIcu, ValueThatThePatternCannotFormat_EndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  entry_.add_attrib_str("TypeChar32", "x", true);
  EXPECT_EXIT(rendering_.icu("{0,number} %s%TypeChar32%"), testing::KilledBySignal(SIGABRT), "");
}

// ---- The limit of ten arguments ----

TEST_F(RenderIcu, TenReferences_Rendered) {
  entry_.add_attrib_4u("TypeUInt4", 3);
  EXPECT_EQ(rendering_.icu(references(10)), "3,3,3,3,3,3,3,3,3,3");
}

TEST_F(RenderIcu, ElevenReferences_Throw) {
  expect_pattern_failure(references(11));
  expect_pattern_failure(references(30));
}

TEST_F(RenderIcu, TenReferencesAndDroppedOnes_Rendered) {
  entry_.add_attrib_4u("TypeUInt4", 3);
  EXPECT_EQ(rendering_.icu("%x%TypeUInt4%:" + references(10) + "%_%TIMESTAMP%"), ":3,3,3,3,3,3,3,3,3,3,");
}

TEST_F(RenderIcu, BadReferenceBehindTheLimit_WinsOverIt) {
  const std::string prefix = "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  ";
  EXPECT_EQ(
      thrown_by([&] { rendering_.icu(references(11) + "%d%Missing%"); }),
      thrown<QZX_logging_invalid_message_string>((prefix + "unable to find attribute value for \"Missing\"!").c_str()));
  EXPECT_EQ(thrown_by([&] { rendering_.icu(references(11) + "%d%TypeFloat%"); }),
            thrown<QZX_logging_invalid_message_string>(
                (prefix + "invalid format specifier for attribute \"TypeFloat\"!").c_str()));
}

TEST_F(RenderIcu, BadReferenceInABadPattern_WinsOverIt) {
  EXPECT_EQ(
      thrown_by([&] { rendering_.icu("{ %d%Missing%"); }),
      thrown<QZX_logging_invalid_message_string>(
          "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  unable to find attribute value for "
          "\"Missing\"!"));
}

TEST_F(RenderIcu, UnsetValueInMode1AndBadPattern_TheReadWins) {
  _qz_LOG_log_entry_imp::global_operation_mode = 1;
  EXPECT_EQ(thrown_by([&] { rendering_.icu("{ " + references(12)); }),
            thrown<QZX_logging_attribute_not_found>(
                "<QZX_logging_attribute_not_found> Attribute TypeUInt4 cannot be located."));
}

// ---- Times ----

TEST_F(RenderIcu, TimesOfEveryType_CalendarFieldsReadAsLocalTime) {
  for (const char* zone : {"UTC", "Asia/Kathmandu", "America/New_York", "Australia/Lord_Howe"}) {
    const TimeZone local(zone);
    RenderingSettings::set_icu_zone(zone);
    for (const char* text : {"2026-07-04 23:59:58", "2026-07-04 23:59:58 GMT", "2026-01-04 00:00:00"}) {
      qz_Time time;
      ASSERT_TRUE(time.set_to_string_value(text));
      for (const std::string name : {"TypeDate", "TypeTime", "TypeTimestamp"}) {
        entry_.add_attrib_time(name.c_str(), time);
        const std::string day = text[6] == '7' ? "Jul 4, 2026" : "Jan 4, 2026";
        EXPECT_EQ(rendering_.icu("%D%" + name + "%"), day) << zone << " " << text;
        expect_as_oracle("%D%" + name + "% %T%" + name + "%");
      }
    }
  }
}

TEST_F(RenderIcu, ZoneOfIcuOtherThanThatOfTheProcess_TimeShiftedByBoth) {
  const TimeZone local("Asia/Tokyo");
  RenderingSettings::set_icu_zone("UTC");
  qz_Time time;
  ASSERT_TRUE(time.set_to_string_value("2026-07-04 03:00:00"));
  entry_.add_attrib_time("TypeDate", time);
  EXPECT_EQ(rendering_.icu("%D%TypeDate%"), "Jul 3, 2026");
  expect_as_oracle("%D%TypeDate% %T%TypeDate%");
}

TEST_F(RenderIcu, ExtremeTimes_AsTheOracle) {
  for (const char* text : {"1970-01-01 00:00:00", "1969-12-31 23:59:59", "0001-01-01 00:00:00", "9999-12-31 23:59:59",
                           "1582-10-10 12:00:00", "2000-02-29 12:00:00"}) {
    qz_Time time;
    ASSERT_TRUE(time.set_to_string_value(text)) << text;
    entry_.add_attrib_time("TypeTimestamp", time);
    expect_as_oracle("%D%TypeTimestamp% %T%TypeTimestamp%");
  }
}

TEST_F(RenderIcu, TimeInTheSkippedAndRepeatedHour_AsTheOracle) {
  const TimeZone local("Europe/Berlin");
  RenderingSettings::set_icu_zone("Europe/Berlin");
  for (const char* text : {"2026-03-29 02:30:00", "2026-10-25 02:30:00"}) {
    qz_Time time;
    ASSERT_TRUE(time.set_to_string_value(text));
    entry_.add_attrib_time("TypeTimestamp", time);
    expect_as_oracle("%D%TypeTimestamp% %T%TypeTimestamp%");
  }
}

TEST_F(RenderIcu, AllocationFails_MemoryAllocAndNothingElse) {
  entry_.add_attrib_mbstr("TypeMBChar64", "a text", true);
  int number = 0;
  const auto fresh_template = [&] {
    rendering_.definition().set_default_msg_text(
        ("template " + std::to_string(number++) + " %s%TypeMBChar64% and %d%TypeUInt4%").c_str());
  };
  fresh_template();
  EXPECT_GT(
      FailEveryAllocation(
          [&] { static_cast<void>(_qz_LOG_log_message::get_message(entry_, &rendering_.definition(), false, 0)); },
          fresh_template),
      3U);
}

}  // namespace
}  // namespace qz_test
