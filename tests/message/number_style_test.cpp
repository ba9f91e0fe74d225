#include "message/number_style.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/msgfmt.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "message/format_types.h"
#include "tests/message/message_fixture.h"
#include "tests/support/rounds.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace qz_test {
namespace {

constexpr MessageFormatKind kKinds[] = {MessageFormatKind::kFloat, MessageFormatKind::kPercent,
                                        MessageFormatKind::kCurrency};

/// ICU's own formatter of a format in a locale, and the style learnt from it.
class Numbers {
 public:
  Numbers(const icu::Locale& locale, MessageFormatKind kind) {
    UErrorCode status = U_ZERO_ERROR;
    const std::string pattern = std::string("{0") + argument_style(kind) + "}";
    format_ = std::make_unique<icu::MessageFormat>(icu::UnicodeString::fromUTF8(pattern), locale, status);
    EXPECT_TRUE(U_SUCCESS(status)) << locale.getName();
    int count = 0;
    formatter_ = format_->getFormats(count)[0];
    style_ = std::make_unique<NumberStyle>(formatter_);
  }

  const NumberStyle& style() const { return *style_; }
  std::string icu_text(double value) const {
    icu::UnicodeString text;
    UErrorCode status = U_ZERO_ERROR;
    formatter_->format(icu::Formattable(value), text, status);
    EXPECT_TRUE(U_SUCCESS(status)) << value;
    return to_utf8(text);
  }
  std::string text(double value) const {
    TextBuffer text;
    text.append('<');
    style_->append(text, value);
    return std::string(text.data() + 1, text.size() - 1);
  }

 private:
  std::unique_ptr<icu::MessageFormat> format_;
  const icu::Format* formatter_ = nullptr;
  std::unique_ptr<NumberStyle> style_;
};

std::vector<double> extreme_values() {
  using Limits = std::numeric_limits<double>;
  std::vector<double> values = {0.0,
                                Limits::quiet_NaN(),
                                Limits::infinity(),
                                Limits::max(),
                                Limits::min(),
                                Limits::denorm_min(),
                                Limits::epsilon(),
                                9007199254740991.0,
                                9007199254740993.0};
  for (int power = -12; power <= 25; ++power) {
    const double ten = std::pow(10.0, power);
    for (const double factor : {1.0, 1.5, 2.5, 5.0, 9.5, 9.995, 9.9995, 0.4999999999999999, 0.9999999999999999}) {
      values.push_back(ten * factor);
      values.push_back(std::nextafter(ten * factor, 0.0));
      values.push_back(std::nextafter(ten * factor, Limits::infinity()));
    }
  }
  // Halves of the last digit that is shown, which go to the even one.
  for (int i = 0; i < 40; ++i) {
    for (const double unit : {1.0, 0.1, 0.01, 0.001, 0.0001, 0.00001}) values.push_back((i + 0.5) * unit);
  }
  const std::size_t count = values.size();
  for (std::size_t i = 0; i < count; ++i) values.push_back(-values[i]);
  return values;
}

/// Of all sizes: amounts as people have them, and any bits.
double random_value(RandomNumbers& random) {
  if (random.one_in(4)) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(
        random.between(std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max())));
  }
  const double units = static_cast<double>(random.between(-1'000'000'000'000'000, 1'000'000'000'000'000));
  return units / std::pow(10.0, static_cast<double>(random.between(0, 18)));
}

std::vector<icu::Locale> all_locales() {
  int count = 0;
  const icu::Locale* const available = icu::Locale::getAvailableLocales(count);
  std::vector<icu::Locale> locales(available, available + count);
  for (const char* const name : {"", "en@numbers=deva", "de@numbers=arabext", "ar@numbers=latn", "hi@numbers=mathsanb",
                                 "zh@numbers=hanidec", "th@numbers=thai", "ff_Adlm@numbers=adlm", "en@currency=JPY",
                                 "de_CH@currency=KWD", "en@currency=XYZ", "es_ES@currency=CLF"}) {
    locales.emplace_back(name);
  }
  return locales;
}

// ---- every locale ----

TEST(NumberStyle, EveryLocaleAndFormat_TextOfIcu) {
  SeededRandom random;
  const std::vector<double> extremes = extreme_values();
  const int randoms = std::getenv("QZLOG_STRESS") != nullptr ? 4000 : rounds(60);
  const std::size_t step = std::getenv("QZLOG_STRESS") != nullptr ? 1 : 37;
  long compared = 0;
  std::vector<std::string> refused;
  for (const icu::Locale& locale : all_locales()) {
    for (const MessageFormatKind kind : kKinds) {
      const Numbers numbers(locale, kind);
      if (!numbers.style().is_usable()) {
        refused.push_back(locale.getName() + std::string(argument_style(kind)));
        continue;
      }
      for (std::size_t i = random.below(step); i < extremes.size(); i += step, ++compared) {
        ASSERT_EQ(numbers.text(extremes[i]), numbers.icu_text(extremes[i])) << locale.getName() << argument_style(kind);
      }
      for (int i = 0; i < randoms; ++i, ++compared) {
        const double value = random_value(random);
        ASSERT_EQ(numbers.text(value), numbers.icu_text(value)) << locale.getName() << argument_style(kind);
      }
    }
  }
  RecordProperty("compared", std::to_string(compared));
  // What is not usable costs ICU's formatter for each number.
  EXPECT_EQ(refused, std::vector<std::string>());
}

TEST(NumberStyle, DigitsThatAreNoDecimals_NotUsable) {
  for (const char* const name : {"ja@numbers=jpan", "el@numbers=grek", "en@numbers=roman"}) {
    EXPECT_FALSE(Numbers(icu::Locale(name), MessageFormatKind::kFloat).style().is_usable()) << name;
  }
}

TEST(NumberStyle, KnownTexts_Literally) {
  EXPECT_EQ(Numbers(icu::Locale("en"), MessageFormatKind::kFloat).text(-1234567.8915), "-1,234,567.892");
  EXPECT_EQ(Numbers(icu::Locale("en"), MessageFormatKind::kFloat).text(0.0005), "0");
  EXPECT_EQ(Numbers(icu::Locale("hi"), MessageFormatKind::kFloat).text(12345678.5), "1,23,45,678.5");
  EXPECT_EQ(Numbers(icu::Locale("de"), MessageFormatKind::kPercent).text(0.125), "12\u00A0%");
  EXPECT_EQ(Numbers(icu::Locale("ja_JP"), MessageFormatKind::kCurrency).text(1234.5), "\uFFE51,234");
}

// ---- one locale thoroughly ----

TEST(NumberStyle, ExtremeAndRandomValues_TextOfIcu) {
  SeededRandom random;
  for (const char* const name : {"en", "de", "hi", "ar", "es", "ja", "de_CH", "fa"}) {
    for (const MessageFormatKind kind : kKinds) {
      const Numbers numbers{icu::Locale(name), kind};
      ASSERT_TRUE(numbers.style().is_usable()) << name;
      for (const double value : extreme_values()) ASSERT_EQ(numbers.text(value), numbers.icu_text(value)) << name;
      for (int i = 0; i < rounds(20000); ++i) {
        const double value = random_value(random);
        ASSERT_EQ(numbers.text(value), numbers.icu_text(value)) << name << argument_style(kind) << ' ' << value;
      }
    }
  }
}

}  // namespace
}  // namespace qz_test
