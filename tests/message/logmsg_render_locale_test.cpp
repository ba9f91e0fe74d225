#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "message/logmsg.h"
#include "qzlog/logcfg.h"
#include "tests/message/message_fixture.h"
#include "tests/message/message_oracle.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

class RenderLocale : public testing::Test {
 protected:
  RenderLocale() {
    entry_.add_attrib_4("TypeSInt4", -1234567);
    entry_.add_attrib_4u("TypeUInt4", 42);
    entry_.add_attrib_float8("TypeFloat", 9876543.21);
    entry_.add_attrib_str("TypeChar32", "text {0}", true);
    qz_Time time;
    EXPECT_TRUE(time.set_to_string_value("2026-11-21 08:15:30"));
    entry_.add_attrib_time("TypeTimestamp", time);
  }

  std::string oracle(const std::string& message_template, const icu::Locale& locale) {
    return to_utf8(oracle_message(message_template, entry_, locale));
  }

  MessageRendering rendering_;
  _qz_LOG_log_entry_imp& entry_ = rendering_.entry();
};

constexpr const char* kTemplates[] = {
    "%d%TypeSInt4% %u%TypeUInt4% %f%TypeFloat%",
    "%C%TypeFloat% %C%TypeSInt4% %P%TypeUInt4% %P%TypeFloat%",
    "%D%TypeTimestamp% %T%TypeTimestamp% %s%TypeChar32%",
    "{0,plural,one{#}few{# few}many{# many}other{# other}} %d%TypeUInt4%",
};

TEST_F(RenderLocale, EveryLocaleOfIcuAsDefault_AsTheOracle) {
  int count = 0;
  const icu::Locale* locales = icu::Locale::getAvailableLocales(count);
  ASSERT_GT(count, 100);
  for (int i = 0; i < count; ++i) {
    RenderingSettings::set_icu_locale(locales[i].getName());
    for (const char* text : kTemplates) {
      ASSERT_EQ(rendering_.icu(text), oracle(text, locales[i])) << text << " in " << locales[i].getName();
    }
  }
}

TEST_F(RenderLocale, EveryLocaleThatCanBeSet_AsTheOracle) {
  for (unsigned value = 1; value <= QZ_LOCALE_ZH_TW; ++value) {
    const auto locale = static_cast<qz_Locale>(value);
    qz_LOG_LogConfig::SetLocale(locale);
    const icu::Locale expected(qz_I18N_get_locale_name(locale));
    for (const char* text : kTemplates) EXPECT_EQ(rendering_.icu(text), oracle(text, expected)) << text;
  }
}

TEST_F(RenderLocale, KnownTexts_Literally) {
  const std::string text = "%f%TypeFloat%|%P%TypeUInt4%|%D%TypeTimestamp%|%d%TypeSInt4%";
  const struct {
    qz_Locale locale;
    const char* message;
  } cases[] = {{QZ_LOCALE_EN_US, "9,876,543.21|4,200%|Nov 21, 2026|-1234567"},
               {QZ_LOCALE_DE_DE, "9.876.543,21|4.200\u00A0%|21.11.2026|-1234567"},
               {QZ_LOCALE_FR_FR, "9\u202F876\u202F543,21|4\u202F200\u00A0%|21 nov. 2026|-1234567"},
               {QZ_LOCALE_JA_JP, "9,876,543.21|4,200%|2026/11/21|-1234567"}};
  for (const auto& c : cases) {
    qz_LOG_LogConfig::SetLocale(c.locale);
    EXPECT_EQ(rendering_.icu(text), c.message);
  }
}

TEST_F(RenderLocale, SetLocale_LeavesIcusDefaultAlone) {
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
  EXPECT_STREQ(icu::Locale::getDefault().getName(), "en_US");
  EXPECT_EQ(rendering_.icu("%f%TypeFloat%"), "9.876.543,21");
  RenderingSettings::set_icu_locale("ja_JP");
  EXPECT_EQ(rendering_.icu("%f%TypeFloat%"), "9.876.543,21");
}

TEST_F(RenderLocale, ProcessLocaleAgain_AsTheProcessFoundIt) {
  RenderingSettings::set_icu_locale("fr_FR");
  const std::string before = rendering_.icu("%f%TypeFloat%");
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
  EXPECT_NE(rendering_.icu("%f%TypeFloat%"), before);
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
  EXPECT_EQ(rendering_.icu("%f%TypeFloat%"), before);
}

TEST_F(RenderLocale, LocaleChangedBetweenTwoMessages_TakesEffect) {
  for (int round = 0; round < 2; ++round) {
    for (const auto locale : {QZ_LOCALE_EN_US, QZ_LOCALE_DE_DE, QZ_LOCALE_AR_SA, QZ_LOCALE_JA_JP}) {
      qz_LOG_LogConfig::SetLocale(locale);
      for (const char* text : kTemplates) {
        EXPECT_EQ(rendering_.icu(text), oracle(text, icu::Locale(qz_I18N_get_locale_name(locale))));
      }
    }
  }
}

TEST_F(RenderLocale, IcusDefaultLocaleChangedBetweenTwoMessages_TakesEffect) {
  for (const char* locale : {"en_US", "de_DE", "ar_EG", "en_US", "ar_EG@numbers=latn", "th_TH_TH"}) {
    RenderingSettings::set_icu_locale(locale);
    for (const char* text : kTemplates) EXPECT_EQ(rendering_.icu(text), oracle(text, icu::Locale(locale))) << locale;
  }
}

/// Templates that show a time, by a reference or by literal text that ICU takes as part of the pattern.
constexpr const char* kTimeTemplates[] = {"%T%TypeTimestamp%", "%D%TypeTimestamp% %T%TypeTimestamp%",
                                          "{0} %D%TypeTimestamp%", "{0,time} %D%TypeTimestamp%",
                                          "{1,plural,other{{0,time}}} %D%TypeTimestamp% %d%TypeUInt4%"};

TEST_F(RenderLocale, IcusDefaultZoneChangedBetweenTwoMessages_TakesEffect) {
  for (const char* text : kTimeTemplates) {
    for (const char* zone : {"UTC", "Asia/Kathmandu", "America/New_York", "UTC"}) {
      RenderingSettings::set_icu_zone(zone);
      EXPECT_EQ(rendering_.icu(text), oracle(text, icu::Locale("en_US"))) << text << " in " << zone;
    }
  }
}

TEST_F(RenderLocale, ZoneChangedWhenOnlyTheTextAsksForATime_TakesEffect) {
  // The number is the argument of the literal {0,time}, which ICU shows as a time.
  for (const char* text : {"{0,time} %d%TypeUInt4%", "{0,date,full} {0,time} %C%TypeUInt4%"}) {
    for (const char* zone : {"UTC", "Asia/Kathmandu", "America/New_York"}) {
      RenderingSettings::set_icu_zone(zone);
      EXPECT_EQ(rendering_.icu(text), oracle(text, icu::Locale("en_US"))) << text << " in " << zone;
    }
  }
}

TEST_F(RenderLocale, ZoneOfTheProcessChangedBetweenTwoMessages_TakesEffect) {
  for (const char* zone : {"UTC", "Asia/Tokyo", "America/New_York", "UTC"}) {
    const TimeZone local(zone);
    EXPECT_EQ(rendering_.icu("%T%TypeTimestamp%"), oracle("%T%TypeTimestamp%", icu::Locale("en_US"))) << zone;
  }
}

TEST_F(RenderLocale, CodePageChangedBetweenTwoMessages_TakesEffect) {
  const std::string text = "%s%TypeMBChar64%";
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  entry_.add_attrib_mbstr("TypeMBChar64", "\xE9", true);
  EXPECT_EQ(rendering_.icu(text), "é");
  qz_LOG_LogConfig::SetCodePage("windows-1251");
  EXPECT_EQ(rendering_.icu(text), "й");
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  EXPECT_EQ(rendering_.icu(text), "é");
}

// ---- Many templates ----

TEST_F(RenderLocale, MoreTemplatesThanAreKept_EachRendersAsBefore) {
  constexpr int kTemplateCount = 1300;
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < kTemplateCount; ++i) {
      const std::string text = "number " + std::to_string(i) + ": %d%TypeUInt4%";
      const std::string expected = "number " + std::to_string(i) + ": 42";
      ASSERT_EQ(rendering_.icu(text), expected);
      ASSERT_EQ(rendering_.narrow(text + "!"), expected + "!");
      ASSERT_EQ(rendering_.icu("number 0: %d%TypeUInt4%"), "number 0: 42");
    }
  }
}

TEST_F(RenderLocale, SameTextOnBothPaths_EachPathsOwnTokens) {
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(rendering_.icu("{0} %d%TypeUInt4% %%tail"), "42 42%");
    EXPECT_EQ(rendering_.narrow("{0} %d%TypeUInt4% %%tail"), "{0} 42tail");
  }
}

TEST_F(RenderLocale, VeryLongTemplates_Rendered) {
  for (const std::size_t length : {4096U, 4097U, 70000U, 1000000U}) {
    const std::string filler(length, 'x');
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(rendering_.icu(filler + "%d%TypeUInt4%"), filler + "42");
      EXPECT_EQ(rendering_.narrow(filler + "%d%TypeUInt4%" + filler), filler + "42" + filler);
    }
  }
}

TEST_F(RenderLocale, TemplatesThatDifferLate_NotConfused) {
  const std::string filler(4000, 'x');
  for (const char* end : {"a", "b", "a"}) {
    EXPECT_EQ(rendering_.icu(filler + end + "%d%TypeUInt4%"), filler + end + "42");
    EXPECT_EQ(rendering_.narrow(filler + end), filler + end);
  }
}

TEST_F(RenderLocale, ValuesOfAnEarlierMessage_NotLeftBehind) {
  const std::string text = "%d%TypeUInt4% %s%TypeChar32% %f%TypeFloat%";
  EXPECT_EQ(rendering_.icu(text), "42 text {0} 9,876,543.21");
  entry_.remove_attrib("TypeUInt4");
  entry_.remove_attrib("TypeChar32");
  entry_.remove_attrib("TypeFloat");
  EXPECT_EQ(rendering_.icu(text), "0  0");
}

TEST_F(RenderLocale, SameTemplateForADefinitionWithOtherTypes_ItsOwnTypes) {
  EXPECT_EQ(rendering_.icu("%d%TypeUInt4%"), "42");
  EXPECT_EQ(rendering_.narrow("%d%TypeUInt4%"), "42");
  _qz_LOG_log_definition other;
  other.add_attr_info("TypeUInt4", TypeChar32, false, nullptr);
  other.set_default_msg_text("%d%TypeUInt4%");
  const char* const text =
      "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  invalid format specifier for attribute "
      "\"TypeUInt4\"!";
  EXPECT_EQ(thrown_by([&] { _qz_LOG_log_message::get_message(entry_, &other, false, 0); }),
            thrown<QZX_logging_invalid_message_string>(text));
  EXPECT_EQ(thrown_by([&] { _qz_LOG_log_message::get_qzString_message(entry_, &other, false, 0); }),
            thrown<QZX_logging_invalid_message_string>(text));
  EXPECT_EQ(rendering_.icu("%d%TypeUInt4%"), "42");
}

TEST_F(RenderLocale, RenderingThatFailedHalfway_NextOneComplete) {
  const std::string text = "%d%TypeUInt4% %s%TypeChar32%";
  entry_.remove_attrib("TypeChar32");
  _qz_LOG_log_entry_imp::global_operation_mode = 1;
  const char* const not_found = "<QZX_logging_attribute_not_found> Attribute TypeChar32 cannot be located.";
  EXPECT_EQ(thrown_by([&] { rendering_.icu(text); }), thrown<QZX_logging_attribute_not_found>(not_found));
  EXPECT_EQ(thrown_by([&] { rendering_.narrow(text); }), thrown<QZX_logging_attribute_not_found>(not_found));
  entry_.add_attrib_str("TypeChar32", "back", true);
  entry_.add_attrib_4u("TypeUInt4", 1);
  EXPECT_EQ(rendering_.icu(text), "1 back");
  EXPECT_EQ(rendering_.narrow(text), "1 back");
}

// ---- Random templates and values ----

/// Draws templates whose references fit, with the message that the narrow path gives for them.
class RandomMessage {
 public:
  RandomMessage(SeededRandom& random, _qz_LOG_log_entry_imp& entry) : random_(random), entry_(entry) {}

  void draw() {
    set_values();
    text_.clear();
    narrow_.clear();
    for (long long left = random_.between(0, 10); left > 0; --left) {
      add_text();
      add_reference();
    }
    if (random_.one_in(2)) add_text();
  }

  const std::string& message_template() const { return text_; }
  const std::string& narrow() const { return narrow_; }

 private:
  void set_values() {
    integer_ = static_cast<int>(random_.one_in(4) ? random_.between(std::numeric_limits<int>::min(), -2147483000)
                                                  : random_.between(-100000, 100000));
    unsigned_ = static_cast<unsigned>(random_.between(0, 4294967295LL));
    number_ = static_cast<double>(random_.between(-1000000000, 1000000000)) / 1000.0;
    string_ = random_.one_in(2) ? "{1} '%漢" : "plain";
    char date[32];
    std::snprintf(date, sizeof(date), "%04d-%02d-%02d", static_cast<int>(random_.between(1971, 2100)),
                  static_cast<int>(random_.between(1, 12)), static_cast<int>(random_.between(1, 28)));
    date_ = date;
    entry_.add_attrib_4("TypeSInt4", integer_);
    entry_.add_attrib_4u("TypeUInt4", unsigned_);
    entry_.add_attrib_float8("TypeFloat", number_);
    entry_.add_attrib_mbstr("TypeMBChar64", string_.c_str(), true);
    qz_Time time;
    EXPECT_TRUE(time.set_to_string_value((date_ + " 12:34:56").c_str()));
    entry_.add_attrib_time("TypeDate", time);
  }

  void add_text() {
    static const char* const kTexts[] = {", ", " é漢😀 ", "it''s ", "x", "#|<"};
    const char* const text = kTexts[random_.between(0, 4)];
    text_ += text;
    narrow_ += text;
  }

  void add_reference() {
    const char* reference = "";
    switch (random_.between(0, 9)) {
      case 0:
        reference = "%d%TypeSInt4%";
        narrow_ += std::to_string(integer_);
        break;
      case 1:
        reference = "%u%TypeUInt4%";
        narrow_ += std::to_string(unsigned_);
        break;
      case 2:
        reference = "%f%TypeFloat%";
        narrow_ += printed("%f");
        break;
      case 3:
        reference = "%C%TypeSInt4%";
        narrow_ += "$" + std::to_string(std::abs(static_cast<long long>(integer_)));
        break;
      case 4:
        reference = "%P%TypeSInt4%";
        narrow_ += std::to_string(100LL * integer_) + "%";
        break;
      case 5:
        reference = "%s%TypeMBChar64%";
        narrow_ += string_;
        break;
      case 6:
        reference = "%D%TypeDate%";
        narrow_ += date_;
        break;
      case 7:
        reference = "%T ignored %TypeDate%";
        narrow_ += "12:34:56";
        break;
      case 8:
        reference = "%x%TypeBool%";
        break;
      default:
        reference = "%d%TypeBool%";
        break;
    }
    text_ += reference;
  }

  std::string printed(const char* format) const {
    char text[64];
    std::snprintf(text, sizeof(text), format, number_);
    return text;
  }

  SeededRandom& random_;
  _qz_LOG_log_entry_imp& entry_;
  std::string text_;
  std::string narrow_;
  int integer_ = 0;
  unsigned unsigned_ = 0;
  double number_ = 0.0;
  std::string string_;
  std::string date_;
};

TEST_F(RenderLocale, RandomTemplatesValuesAndLocales_AsTheOracles) {
  SeededRandom random;
  const char* const locales[] = {"en_US", "de_DE", "fr_FR", "ar_SA", "ar_EG", "ja_JP", "hi_IN", "pl_PL"};
  const char* const zones[] = {"UTC", "Asia/Kathmandu", "America/St_Johns"};
  RandomMessage message(random, entry_);
  for (int i = 0; i < rounds(3000) && !testing::Test::HasFailure(); ++i) {
    message.draw();
    const char* const locale = locales[random.between(0, 7)];
    RenderingSettings::set_icu_locale(locale);
    RenderingSettings::set_icu_zone(zones[random.between(0, 2)]);
    const std::string& text = message.message_template();
    EXPECT_EQ(rendering_.narrow(text), message.narrow()) << text;
    EXPECT_EQ(rendering_.icu(text), oracle(text, icu::Locale(locale))) << text << " in " << locale;
    EXPECT_EQ(rendering_.icu(text), oracle(text, icu::Locale(locale))) << "again, " << text << " in " << locale;
  }
}

}  // namespace
}  // namespace qz_test
