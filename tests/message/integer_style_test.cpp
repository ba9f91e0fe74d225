#include "message/integer_style.h"

#include <gtest/gtest.h>
#include <unicode/fieldpos.h>
#include <unicode/msgfmt.h>

#include <climits>
#include <memory>
#include <string>
#include <vector>

#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace qz_test {
namespace {

class IcuIntegers {
 public:
  explicit IcuIntegers(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    format_ = std::make_unique<icu::MessageFormat>(u"{0,number,##########}", locale, status);
    EXPECT_TRUE(U_SUCCESS(status)) << locale.getName();
  }
  std::string text(int value) const {
    const icu::Formattable argument(value);
    icu::UnicodeString text;
    icu::FieldPosition position;
    UErrorCode status = U_ZERO_ERROR;
    format_->format(&argument, 1, text, position, status);
    EXPECT_TRUE(U_SUCCESS(status)) << value;
    return to_utf8(text);
  }

 private:
  std::unique_ptr<icu::MessageFormat> format_;
};

std::string appended(const IntegerStyle& style, int value) {
  TextBuffer text;
  text.append('<');
  style.append(text, value);
  text.append('>');
  return std::string(text.data(), text.size());
}

std::vector<int> extreme_values() {
  std::vector<int> values = {0, INT_MAX, INT_MIN, INT_MAX - 1, INT_MIN + 1};
  for (int power = 1; power <= 1000000000 && power > 0; power = power <= 100000000 ? power * 10 : INT_MAX) {
    for (const int value : {power - 1, power, power + 1}) {
      values.push_back(value);
      values.push_back(-value);
    }
  }
  return values;
}

/// Whether the style can be used; what it then gives is ICU's text.
bool expect_as_icu(const icu::Locale& locale, SeededRandom& random) {
  const IntegerStyle style(locale);
  if (!style.is_usable()) return false;
  static const std::vector<int> kExtremes = extreme_values();
  const IcuIntegers icu(locale);
  std::vector<int> values = kExtremes;
  for (int i = 0; i < 12; ++i) {
    const auto bits = static_cast<unsigned>(random.between(0, (1LL << random.between(1, 32)) - 1));
    values.push_back(static_cast<int>(bits));
  }
  for (const int value : values) {
    EXPECT_EQ(appended(style, value), "<" + icu.text(value) + ">") << value << " in " << locale.getName();
  }
  return true;
}

struct Digits {
  const char* name;
  bool one_for_each;  // a digit of theirs for each of ours
};
constexpr Digits kDigits[] = {{"arab", true},   {"thai", true},        {"hanidec", true},
                              {"roman", false}, {"hans", false},       {"tamldec", true},
                              {"native", true}, {"traditional", true}, {"latn", true}};

icu::Locale with_digits(const icu::Locale& locale, const char* digits) {
  icu::Locale changed(locale);
  UErrorCode status = U_ZERO_ERROR;
  changed.setKeywordValue("numbers", digits, status);
  EXPECT_TRUE(U_SUCCESS(status)) << locale.getName() << " " << digits;
  return changed;
}

TEST(IntegerStyle, EveryLocaleOfIcu_IcusTextsWhereUsable) {
  SeededRandom random;
  int count = 0;
  const icu::Locale* const locales = icu::Locale::getAvailableLocales(count);
  ASSERT_GT(count, 100);
  int usable = 0;
  for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) usable += expect_as_icu(locales[i], random) ? 1 : 0;
  EXPECT_EQ(usable, count) << "what is not usable costs a whole MessageFormat per message";
}

class IntegerStyleDigits : public testing::TestWithParam<Digits> {};

TEST_P(IntegerStyleDigits, EveryLocaleOfIcuWithTheseDigits_IcusTextsWhereUsable) {
  SeededRandom random;
  int count = 0;
  const icu::Locale* const locales = icu::Locale::getAvailableLocales(count);
  int usable = 0;
  for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
    usable += expect_as_icu(with_digits(locales[i], GetParam().name), random) ? 1 : 0;
  }
  EXPECT_EQ(usable > 0, GetParam().one_for_each);
}

INSTANTIATE_TEST_SUITE_P(Digits, IntegerStyleDigits, testing::ValuesIn(kDigits),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST(IntegerStyle, LanguagesInUse_Usable) {
  for (const char* const name :
       {"en", "en_US", "de", "de_CH", "ar", "ar_EG", "ar_SA", "ja", "fa", "hi", "sv", "he", "my", "ne", "lt"}) {
    EXPECT_TRUE(IntegerStyle(icu::Locale(name)).is_usable()) << name;
  }
}

TEST(IntegerStyle, KnownTexts_Literally) {
  const struct {
    const char* locale;
    const char* text;
  } cases[] = {{"en", "<-1234567890>"},
               {"sv", "<−1234567890>"},
               {"ja@numbers=hanidec", "<-一二三四五六七八九〇>"},
               {"th@numbers=thai", "<-๑๒๓๔๕๖๗๘๙๐>"}};
  for (const auto& c : cases) EXPECT_EQ(appended(IntegerStyle(icu::Locale(c.locale)), -1234567890), c.text) << c.locale;
}

TEST(IntegerStyle, RomanNumerals_NotUsable) { EXPECT_FALSE(IntegerStyle(icu::Locale("en@numbers=roman")).is_usable()); }

TEST(IntegerStyle, OddLocales_IcusTextsWhereUsable) {
  SeededRandom random;
  for (const icu::Locale& locale :
       {icu::Locale(""), icu::Locale("xx_YY"), icu::Locale("no such locale"), icu::Locale("C"),
        icu::Locale("en@numbers=nonsense"), icu::Locale("ar@numbers=latn"), icu::Locale("th_TH_TH"),
        icu::Locale("de@currency=USD")}) {
    expect_as_icu(locale, random);
  }
}

}  // namespace
}  // namespace qz_test
