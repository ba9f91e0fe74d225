#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tests/lines/lines_fixture.h"

namespace {

class EntryBuilderTest : public qz_test::LinesTest {
 protected:
  void build(const std::string& line) {
    const std::string result = outcome(line);
    ASSERT_EQ(line_.GetLine(), 1U) << result;
  }
  // Builds an entry with one attribute, `value` in JSON.
  void set(const std::string& name, const std::string& value) {
    build(R"({"id":7,"attributes":{")" + name + "\":" + value + "}}");
  }
  // The rule and the text that such an entry is refused with.
  std::string refusal(const std::string& name, const std::string& value) {
    return refusal_of(R"({"id":7,"attributes":{")" + name + "\":" + value + "}}");
  }
  std::string refusal_of(const std::string& line) {
    const std::string result = outcome(line);
    return line_.GetLine() == 0 ? result : "accepted";
  }
  const qz_LOG_LogEntry& entry() const { return line_.GetEntry(); }
};

TEST_F(EntryBuilderTest, Name_FindsTheId) {
  build(R"({"id":"EVERY_TYPE","level":4})");
  EXPECT_EQ(entry().GetEntryID(), 7u);
  EXPECT_EQ(entry().GetLogLevel(), 4u);
}

TEST_F(EntryBuilderTest, NextEntry_KeepsNothingOfTheLast) {
  build(R"({"id":7,"level":4,"time":"2026-11-21T08:15:30Z","attributes":{"U4":5}})");
  build(R"({"id":7})");
  unsigned value = 0;
  EXPECT_FALSE(entry().GetAttrib4u("U4", value));
  EXPECT_EQ(entry().GetLogLevel(), 0u);
  EXPECT_EQ(entry().GetTimestamp(true).unix_seconds(), 0);
}

TEST_F(EntryBuilderTest, EntryAfterARefusedOne_IsBuilt) {
  EXPECT_EQ(refusal_of(R"({"id":9})"), "unknown-id: entry ID 9: Entry id argument is invalid");
  set("U4", "5");
  EXPECT_EQ(entry().GetAttrib4u("U4"), 5u);
}

TEST_F(EntryBuilderTest, Bool_TrueAndFalse) {
  set("B", "true");
  EXPECT_TRUE(entry().GetAttribBool("B"));
  set("B", "false");
  bool value = true;
  ASSERT_TRUE(entry().GetAttribBool("B", value));
  EXPECT_FALSE(value);
}

TEST_F(EntryBuilderTest, Integers_SmallestOfEachType) {
  build(R"({"id":7,"attributes":{"U1":0,"S1":-128,"U2":0,"S2":-32768,"U4":0,"S4":-2147483648}})");
  EXPECT_EQ(entry().GetAttrib1u("U1"), 0u);
  EXPECT_EQ(static_cast<signed char>(entry().GetAttrib1("S1")), -128);
  EXPECT_EQ(entry().GetAttrib2u("U2"), 0u);
  EXPECT_EQ(entry().GetAttrib2("S2"), -32768);
  EXPECT_EQ(entry().GetAttrib4u("U4"), 0u);
  EXPECT_EQ(entry().GetAttrib4("S4"), -2147483647 - 1);
}

TEST_F(EntryBuilderTest, Integers_LargestOfEachType) {
  build(R"({"id":7,"attributes":{"U1":255,"S1":127,"U2":65535,"S2":32767,"U4":4294967295,"S4":2147483647}})");
  EXPECT_EQ(entry().GetAttrib1u("U1"), 255u);
  EXPECT_EQ(entry().GetAttrib1("S1"), 127);
  EXPECT_EQ(entry().GetAttrib2u("U2"), 65535u);
  EXPECT_EQ(entry().GetAttrib2("S2"), 32767);
  EXPECT_EQ(entry().GetAttrib4u("U4"), 4294967295u);
  EXPECT_EQ(entry().GetAttrib4("S4"), 2147483647);
}

TEST_F(EntryBuilderTest, Integers_OutsideTheirTypeAreRefused) {
  const struct {
    const char* name;
    const char* value;
    const char* text;
  } cases[] = {
      {"U1", "-1", "-1 does not fit UInt1 (0 to 255)"},
      {"U1", "256", "256 does not fit UInt1 (0 to 255)"},
      {"S1", "-129", "-129 does not fit SInt1 (-128 to 127)"},
      {"S1", "128", "128 does not fit SInt1 (-128 to 127)"},
      {"U2", "-1", "-1 does not fit UInt2 (0 to 65535)"},
      {"U2", "65536", "65536 does not fit UInt2 (0 to 65535)"},
      {"S2", "-32769", "-32769 does not fit SInt2 (-32768 to 32767)"},
      {"S2", "32768", "32768 does not fit SInt2 (-32768 to 32767)"},
      {"U4", "-1", "-1 does not fit UInt4 (0 to 4294967295)"},
      {"U4", "4294967296", "4294967296 does not fit UInt4 (0 to 4294967295)"},
      {"S4", "-2147483649", "-2147483649 does not fit SInt4 (-2147483648 to 2147483647)"},
      {"S4", "2147483648", "2147483648 does not fit SInt4 (-2147483648 to 2147483647)"},
      {"S4", "18446744073709551615", "18446744073709551615 does not fit SInt4 (-2147483648 to 2147483647)"},
      {"U4", "-9223372036854775808", "-9223372036854775808 does not fit UInt4 (0 to 4294967295)"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(refusal(row.name, row.value), std::string("out-of-range: attribute '") + row.name + "': " + row.text);
  }
}

TEST_F(EntryBuilderTest, Float_TakesEveryNumber) {
  const struct {
    const char* value;
    double number;
  } cases[] = {{"1.5", 1.5}, {"-2", -2.0}, {"1e300", 1e300}, {"18446744073709551615", 18446744073709551615.0}};
  for (const auto& row : cases) {
    set("F", row.value);
    EXPECT_EQ(entry().GetAttribFloat8("F"), row.number) << row.value;
  }
}

TEST_F(EntryBuilderTest, Texts_AreStoredInUtf8) {
  build(R"({"id":7,"attributes":{"C":"K\u00e4se","M":"日本"}})");
  EXPECT_STREQ(entry().GetAttribStr("C"), "K\u00E4se");
  EXPECT_STREQ(entry().GetAttribMBStr("M"), "\u65E5\u672C");
}

TEST_F(EntryBuilderTest, Texts_AreConvertedToTheCodePage) {
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  build(R"({"id":7,"attributes":{"C":"Käse","M":"Öl"}})");
  EXPECT_STREQ(entry().GetAttribStr("C"), "K\xE4se");
  EXPECT_STREQ(entry().GetAttribMBStr("M"), "\xD6l");
}

TEST_F(EntryBuilderTest, CodePageWithZeroBytesInTexts_IsRefused) {
  qz_LOG_LogConfig::SetCodePage("UTF-16BE");
  EXPECT_EQ(refusal("C", "\"a\""), "refused-value: attribute 'C': cannot be converted to UTF-16BE");
  qz_LOG_LogConfig::SetCodePage("no such code page");
  EXPECT_EQ(refusal("C", "\"a\""), "refused-value: attribute 'C': cannot be converted to no such code page");
}

TEST_F(EntryBuilderTest, NegativeZero_KeepsItsSign) {
  for (const char* const value : {"-0", "-0.0", "-0e5"}) {
    set("F", value);
    EXPECT_TRUE(std::signbit(entry().GetAttribFloat8("F"))) << value;
  }
  set("S4", "-0");
  EXPECT_EQ(entry().GetAttrib4("S4"), 0);
}

TEST_F(EntryBuilderTest, LineBreakInAText_IsStoredAsTwoCharacters) {
  set("C", R"("a\nb\r")");
  EXPECT_STREQ(entry().GetAttribStr("C"), "a\\nb\\r");
}

TEST_F(EntryBuilderTest, Times_KeepTheirMoment) {
  build(
      R"({"id":7,"attributes":{"D":"2026-11-21T08:15:30Z","T":"2026-11-21T09:15:30+01:00","S":"2026-11-21T08:15:30.5Z"}})");
  for (const char* const name : {"D", "T", "S"}) {
    EXPECT_EQ(entry().GetAttribTime(name).unix_seconds(), 1795248930) << name;
  }
}

TEST_F(EntryBuilderTest, Time_SetsTheTimestampAndItsFields) {
  build(R"({"id":7,"time":"2026-11-21T08:15:30Z"})");
  EXPECT_EQ(entry().GetTimestamp(true).unix_seconds(), 1795248930);
  EXPECT_EQ(entry().GetAttrib2("TIMEZONE_DIFFERENCE"), 345);
  EXPECT_FALSE(entry().GetAttribBool("DAYLIGHT_SAVING_ACTIVE"));
}

TEST_F(EntryBuilderTest, TimeFieldsGivenToo_Win) {
  build(
      R"({"id":7,"attributes":{"TIMEZONE_DIFFERENCE":60,"DAYLIGHT_SAVING_ACTIVE":true},"time":"2026-11-21T08:15:30Z"})");
  EXPECT_EQ(entry().GetAttrib2("TIMEZONE_DIFFERENCE"), 60);
  EXPECT_TRUE(entry().GetAttribBool("DAYLIGHT_SAVING_ACTIVE"));
}

TEST_F(EntryBuilderTest, TimeFieldGivenTwice_IsRefused) {
  const std::string twice = R"("attributes":{"TIMEZONE_DIFFERENCE":60,"TIMEZONE_DIFFERENCE":61}})";
  EXPECT_EQ(refusal_of(R"({"id":7,)" + twice), "duplicate-attribute: attribute 'TIMEZONE_DIFFERENCE' is given twice");
  EXPECT_EQ(refusal_of(R"({"id":7,"time":"2026-11-21T08:15:30Z",)" + twice),
            "duplicate-attribute: attribute 'TIMEZONE_DIFFERENCE' is given twice");
}

TEST_F(EntryBuilderTest, WrongKinds_AreRefused) {
  const struct {
    const char* name;
    const char* value;
    const char* text;
  } cases[] = {
      {"B", "1", "Bool takes true or false, not an integer"},
      {"B", "\"true\"", "Bool takes true or false, not a text"},
      {"U4", "\"5\"", "UInt4 takes an integer, not a text"},
      {"U4", "1.5", "UInt4 takes an integer, not a floating point number"},
      {"U4", "1.0", "UInt4 takes an integer, not a floating point number"},
      {"U4", "1e3", "UInt4 takes an integer, not a floating point number"},
      {"U4", "true", "UInt4 takes an integer, not true or false"},
      {"U4", "null", "UInt4 takes an integer, not null"},
      {"S1", "[1]", "SInt1 takes an integer, not an array"},
      {"S1", "{}", "SInt1 takes an integer, not an object"},
      {"F", "\"1.5\"", "Float takes a number, not a text"},
      {"F", "null", "Float takes a number, not null"},
      {"C", "5", "Char32 takes a text, not an integer"},
      {"M", "null", "MBChar32 takes a text, not null"},
      {"D", "5", "Date takes a text with a date and time, not an integer"},
      {"S", "true", "Timestamp takes a text with a date and time, not true or false"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(refusal(row.name, row.value), std::string("wrong-kind: attribute '") + row.name + "': " + row.text);
  }
}

TEST_F(EntryBuilderTest, BadTimes_AreRefused) {
  for (const std::string text :
       {"yesterday", "", "2026-11-21", "08:15:30Z", "2026-11-21T08:15:30", "2026-11-21 08:15:30",
        "2026-02-30T00:00:00Z", "2026-11-21T25:00:00Z", "2026-11-21T08:15:30Z ", "2026-11-21T08:15:30+1:00"}) {
    const std::string reason = "'" + text +
                               "' is not a date and time with its zone, such as 2026-11-21T08:15:30Z or "
                               "2026-11-21T09:15:30.5+01:00";
    EXPECT_EQ(refusal("S", "\"" + text + "\""), "bad-time: attribute 'S': " + reason);
    EXPECT_EQ(refusal_of(R"({"id":7,"time":")" + text + "\"}"), "bad-time: 'time': " + reason);
  }
}

TEST_F(EntryBuilderTest, Nul_IsRefused) {
  EXPECT_EQ(refusal("C", R"("a\u0000b")"), "nul-character: the text 'a\\u0000b' holds U+0000, which no text can");
  EXPECT_EQ(refusal("M", R"("\u0000")"), "nul-character: the text '\\u0000' holds U+0000, which no text can");
  EXPECT_EQ(refusal("U4\\u0000", "5"), "nul-character: the text 'U4\\u0000' holds U+0000, which no text can");
}

TEST_F(EntryBuilderTest, UnknownAttribute_IsRefused) {
  EXPECT_EQ(refusal("u4", "5"), "unknown-attribute: attribute 'u4' is not defined for entry ID 7");
  EXPECT_EQ(refusal("", "5"), "unknown-attribute: attribute '' is not defined for entry ID 7");
}

TEST_F(EntryBuilderTest, AttributeTwice_IsRefused) {
  EXPECT_EQ(refusal_of(R"({"id":7,"attributes":{"U4":1,"U2":2,"U4":1}})"),
            "duplicate-attribute: attribute 'U4' is given twice");
}

TEST_F(EntryBuilderTest, Guid_IsRefused) {
  EXPECT_EQ(refusal("G", "\"x\""),
            "unsupported-type: attribute 'G': nothing can be put into an attribute of type GUID");
}

TEST_F(EntryBuilderTest, TextTooLong_IsRefusedInTheLibrarysWords) {
  EXPECT_EQ(refusal("C", "\"" + std::string(33, 'x') + "\""),
            "refused-value: C Attribute value is overflow under Entry ID 7 !");
  EXPECT_EQ(refusal("M", "\"" + std::string(33, 'x') + "\""),
            "refused-value: M Attribute value is overflow under Entry ID 7 !");
}

TEST_F(EntryBuilderTest, UnknownName_IsRefused) {
  EXPECT_EQ(refusal_of(R"({"id":"EVERY"})"), "unknown-name: the definitions have no entry 'EVERY'");
  EXPECT_EQ(refusal_of(R"({"id":"EVERY\u0000"})").substr(0, 40), "unknown-name: the definitions have no en");
  load({.entries = {{.id = 7, .mask = 1}}});
  EXPECT_EQ(refusal_of(R"({"id":"EVERY_TYPE"})"),
            "unknown-name: the name 'EVERY_TYPE' needs definitions with names: these hold only IDs");
}

TEST_F(EntryBuilderTest, TimeWithoutItsGlobals_IsRefusedWithAHint) {
  qz_LOG_LogConfig::ClearDefinitions();
  load({.entries = {{.id = 7, .message_text = "bare"}}});
  EXPECT_EQ(
      refusal_of(R"({"id":7,"time":"2026-11-21T08:15:30Z"})"),
      "time-globals: TIMEZONE_DIFFERENCEis an invalid attibute under Entry ID 7 !; a 'time' needs the definitions "
      "TIMEZONE_DIFFERENCE (SInt2) and DAYLIGHT_SAVING_ACTIVE (Bool), best as globals");
}

}  // namespace
