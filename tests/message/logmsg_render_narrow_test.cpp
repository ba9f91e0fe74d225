#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "message/logmsg.h"
#include "qzlog/logcfg.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

class RenderNarrow : public testing::Test {
 protected:
  MessageRendering rendering_;
  _qz_LOG_log_entry_imp& entry_ = rendering_.entry();
};

std::string formatted(const char* format, double value) {
  char text[512];
  std::snprintf(text, sizeof(text), format, value);
  return text;
}

TEST_F(RenderNarrow, SmallIntegers_DigitsMagnitudeAndHundredfold) {
  const struct {
    const char* name;
    int value;
    const char* digits;
    const char* currency;
    const char* percent;
  } cases[] = {
      {"TypeUInt1", 0, "0", "$0", "0%"},
      {"TypeUInt1", 255, "255", "$255", "25500%"},
      {"TypeSInt1", -1, "-1", "$1", "-100%"},
      {"TypeSInt1", -128, "-128", "$128", "-12800%"},
      {"TypeSInt1", 127, "127", "$127", "12700%"},
      {"TypeUInt2", 65535, "65535", "$65535", "6553500%"},
      {"TypeSInt2", -1, "-1", "$1", "-100%"},
      {"TypeSInt2", -32768, "-32768", "$32768", "-3276800%"},
      {"TypeSInt2", 32767, "32767", "$32767", "3276700%"},
      {"TypeSInt4", 0, "0", "$0", "0%"},
      {"TypeSInt4", -1, "-1", "$1", "-100%"},
      {"TypeSInt4", 21474836, "21474836", "$21474836", "2147483600%"},
      {"TypeSInt4", 21474837, "21474837", "$21474837", "2147483700%"},
      {"TypeSInt4", INT_MAX, "2147483647", "$2147483647", "214748364700%"},
      {"TypeSInt4", INT_MIN, "-2147483648", "$2147483648", "-214748364800%"},
  };
  for (const auto& c : cases) {
    const std::string name = c.name;
    if (name == "TypeUInt1") entry_.add_attrib_1u(c.name, static_cast<unsigned char>(c.value));
    if (name == "TypeSInt1") entry_.add_attrib_1(c.name, static_cast<char>(c.value));
    if (name == "TypeUInt2") entry_.add_attrib_2u(c.name, static_cast<unsigned short>(c.value));
    if (name == "TypeSInt2") entry_.add_attrib_2(c.name, static_cast<short>(c.value));
    if (name == "TypeSInt4") entry_.add_attrib_4(c.name, c.value);
    EXPECT_EQ(rendering_.narrow("%d%" + name + "%"), c.digits) << name << " " << c.value;
    EXPECT_EQ(rendering_.narrow("%u%" + name + "%"), c.digits) << name << " " << c.value;
    EXPECT_EQ(rendering_.narrow("%C%" + name + "%"), c.currency) << name << " " << c.value;
    EXPECT_EQ(rendering_.narrow("%P%" + name + "%"), c.percent) << name << " " << c.value;
  }
}

TEST_F(RenderNarrow, Unsigned32_WholeAsDigitsAndSignedAsCurrencyAndPercent) {
  const struct {
    unsigned value;
    const char* digits;
    const char* currency;
    const char* percent;
  } cases[] = {{0, "0", "$0", "0%"},
               {2147483647U, "2147483647", "$2147483647", "214748364700%"},
               {2147483648U, "2147483648", "$2147483648", "-214748364800%"},
               {4294967295U, "4294967295", "$1", "-100%"}};
  for (const auto& c : cases) {
    entry_.add_attrib_4u("TypeUInt4", c.value);
    EXPECT_EQ(rendering_.narrow("%d%TypeUInt4%"), c.digits);
    EXPECT_EQ(rendering_.narrow("%u%TypeUInt4%"), c.digits);
    EXPECT_EQ(rendering_.narrow("%C%TypeUInt4%"), c.currency) << c.value;
    EXPECT_EQ(rendering_.narrow("%P%TypeUInt4%"), c.percent) << c.value;
  }
}

TEST_F(RenderNarrow, Floats_AsPrintfWritesThem) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double values[] = {0.0,     -0.0,     1.5,       -1.5,     0.0000004,    0.0000005,
                           DBL_MAX, -DBL_MAX, DBL_MIN,   -DBL_MIN, 5e-324,       DBL_MAX / 100.0,
                           123e45,  999999.5, -infinity, infinity, std::nan(""), -std::nan("")};
  for (const double value : values) {
    entry_.add_attrib_float8("TypeFloat", value);
    EXPECT_EQ(rendering_.narrow("%f%TypeFloat%"), formatted("%f", value));
    EXPECT_EQ(rendering_.narrow("%C%TypeFloat%"), "$" + formatted("%f", value < 0.0 ? -value : value));
    EXPECT_EQ(rendering_.narrow("%P%TypeFloat%"), formatted("%f%%", 100.0 * value));
  }
}

TEST_F(RenderNarrow, FloatTexts_Literally) {
  entry_.add_attrib_float8("TypeFloat", -1.5);
  EXPECT_EQ(rendering_.narrow("%f%TypeFloat% %C%TypeFloat% %P%TypeFloat%"), "-1.500000 $1.500000 -150.000000%");
  entry_.add_attrib_float8("TypeFloat", -0.0);
  EXPECT_EQ(rendering_.narrow("%f%TypeFloat% %C%TypeFloat% %P%TypeFloat%"), "-0.000000 $-0.000000 -0.000000%");
  entry_.add_attrib_float8("TypeFloat", -DBL_MAX);
  EXPECT_EQ(rendering_.narrow("%f%TypeFloat%").size(), 317U);
  EXPECT_EQ(rendering_.narrow("%P%TypeFloat%"), "-inf%");
}

TEST_F(RenderNarrow, Texts_AppendedByteByByte) {
  entry_.add_attrib_str("TypeChar32", "a{0}'%d%\xE9\xFF", true);
  entry_.add_attrib_mbstr("TypeMBChar64", "漢字 %s%x%", true);
  EXPECT_EQ(rendering_.narrow("<%s%TypeChar32%|%s%TypeMBChar64%>"), "<a{0}'%d%\xE9\xFF|漢字 %s%x%>");
}

TEST_F(RenderNarrow, BracesApostrophesAndBadBytesInTheTemplate_Literal) {
  entry_.add_attrib_4u("TypeUInt4", 3);
  EXPECT_EQ(rendering_.narrow("{0} it's {bad '' \xFF\xE9 %d%TypeUInt4% }"), "{0} it's {bad '' \xFF\xE9 3 }");
}

TEST_F(RenderNarrow, ElevenReferences_AllRendered) {
  entry_.add_attrib_4u("TypeUInt4", 3);
  std::string text;
  std::string expected;
  for (int i = 0; i < 11; ++i) {
    text += "%d%TypeUInt4%,";
    expected += "3,";
  }
  EXPECT_EQ(rendering_.narrow(text), expected);
}

TEST_F(RenderNarrow, LongestTexts_Whole) {
  entry_.add_attrib_str("TypeChar2K", std::string(2048, 'x').c_str(), true);
  std::string text;
  std::string expected;
  for (int i = 0; i < 100; ++i) {
    text += "%s%TypeChar2K%.";
    expected += std::string(2048, 'x') + ".";
  }
  EXPECT_EQ(rendering_.narrow(text), expected);
}

TEST_F(RenderNarrow, TextBehindAnEscape_Kept) {
  entry_.add_attrib_4u("TypeUInt4", 50);
  EXPECT_EQ(rendering_.narrow("%d%TypeUInt4% %% of %d%TypeUInt4%."), "50 of 50.");
}

TEST_F(RenderNarrow, TimesOfEveryType_CalendarFieldsAsStored) {
  for (const char* zone : {"UTC", "Asia/Kathmandu", "America/New_York", "Australia/Lord_Howe"}) {
    const TimeZone local(zone);
    for (const char* text : {"2026-07-04 23:59:58", "2026-07-04 23:59:58 GMT"}) {
      qz_Time time;
      ASSERT_TRUE(time.set_to_string_value(text));
      for (const char* name : {"TypeDate", "TypeTime", "TypeTimestamp"}) {
        entry_.add_attrib_time(name, time);
        EXPECT_EQ(rendering_.narrow(std::string("%D%") + name + "% %T%" + name + "%"), "2026-07-04 23:59:58")
            << zone << " " << text << " " << name;
      }
    }
  }
}

TEST_F(RenderNarrow, TimestampInGmt_ShownOnTheLocalClock) {
  _qz_LOG_log_definition::add_global_attr_info("TIMEZONE_DIFFERENCE", TypeSInt2);
  _qz_LOG_log_definition::add_global_attr_info("DAYLIGHT_SAVING_ACTIVE", TypeBool);
  qz_Time time;
  ASSERT_TRUE(time.set_to_string_value("2026-07-04 23:59:58 GMT"));
  entry_.set_timestamp(time, true);
  const struct {
    const char* zone;
    const char* text;
  } cases[] = {{"UTC", "2026-07-04 23:59:58"},
               {"Asia/Kathmandu", "2026-07-05 05:44:58"},
               {"America/New_York", "2026-07-04 19:59:58"},
               {"Pacific/Kiritimati", "2026-07-05 13:59:58"}};
  for (const auto& c : cases) {
    const TimeZone local(c.zone);
    EXPECT_EQ(rendering_.narrow("%D%TIMESTAMP% %T%TIMESTAMP%"), c.text) << c.zone;
  }
}

TEST_F(RenderNarrow, OtherLocaleOrCodePage_NoDifference) {
  entry_.add_attrib_4("TypeSInt4", -1234567);
  entry_.add_attrib_float8("TypeFloat", 1234.5);
  const std::string text = "%d%TypeSInt4% %C%TypeFloat% é";
  const std::string expected = rendering_.narrow(text);
  EXPECT_EQ(expected, "-1234567 $1234.500000 é");
  rendering_.settings().set_icu_locale("de_DE");
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_FR_FR);
  qz_LOG_LogConfig::SetCodePage("no such page");
  EXPECT_EQ(rendering_.narrow(text), expected);
}

TEST_F(RenderNarrow, AllocationFails_MemoryAllocAndNothingElse) {
  entry_.add_attrib_mbstr("TypeMBChar64", "a text that is too long for a small string", true);
  int number = 0;
  const auto fresh_template = [&] {
    rendering_.definition().set_default_msg_text(
        ("template " + std::to_string(number++) + " %s%TypeMBChar64% and more text").c_str());
  };
  fresh_template();
  EXPECT_GT(
      FailEveryAllocation(
          [&] {
            static_cast<void>(_qz_LOG_log_message::get_qzString_message(entry_, &rendering_.definition(), false, 0));
          },
          fresh_template),
      3U);
}

}  // namespace
}  // namespace qz_test
