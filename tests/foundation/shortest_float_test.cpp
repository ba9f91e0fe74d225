#include "foundation/shortest_float.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

#include "tests/support/rounds.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/seeded_random.h"

namespace qzlog {
namespace {

using qz_test::rounds;

std::string written(double value) {
  char text[kMaxShortestFloat];
  return std::string(text, write_shortest_float(text, value));
}

/// The digits that count, without sign, point, exponent and the zeros around them.
std::string digits_of(const std::string& text) {
  std::string digits;
  for (const char character : text.substr(0, text.find('e'))) {
    if (character >= '0' && character <= '9' && (character != '0' || !digits.empty())) digits += character;
  }
  while (!digits.empty() && digits.back() == '0') digits.pop_back();
  return digits;
}

/// Reads back as the same number, says that it is none of the integers, and has the digits of std::to_chars.
void check(double value) {
  const std::string text = written(value);
  ASSERT_LE(text.size(), kMaxShortestFloat);
  double read = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), read);
  EXPECT_EQ(result.ptr, text.data() + text.size()) << text;
  EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(value)) << text;
  EXPECT_NE(text.find_first_of(".e"), std::string::npos) << text;
  char plain[64];
  EXPECT_EQ(digits_of(text), digits_of(std::string(plain, std::to_chars(plain, plain + 64, value).ptr))) << text;
}

TEST(WriteShortestFloat, CommonNumbers) {
  EXPECT_EQ(written(0), "0.0");
  EXPECT_EQ(written(-0.0), "-0.0");
  EXPECT_EQ(written(0.875), "0.875");
  EXPECT_EQ(written(-12.5), "-12.5");
  EXPECT_EQ(written(0.1), "0.1");
  EXPECT_EQ(written(0.57), "0.57");
  EXPECT_EQ(written(3), "3.0");
  EXPECT_EQ(written(1000000), "1000000.0");
  EXPECT_EQ(written(1795248930123), "1795248930123.0");
  EXPECT_EQ(written(9007199254740991), "9007199254740991.0");
  EXPECT_EQ(written(0.999999), "0.999999");
  EXPECT_EQ(written(0.001), "0.001");
  EXPECT_EQ(written(1234567.891), "1234567.891");
}

TEST(WriteShortestFloat, OtherNumbers_HaveAnExponentOrManyDigits) {
  EXPECT_EQ(written(1e300), "1e+300");
  EXPECT_EQ(written(-5e-324), "-5e-324");
  EXPECT_EQ(written(1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(written(1e-7), "1e-07");
  EXPECT_EQ(written(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
  EXPECT_EQ(written(-std::numeric_limits<double>::min()), "-2.2250738585072014e-308");
}

TEST(WriteShortestFloat, LargeIntegersWithoutAnExponent_HaveAPoint) {
  const std::string text = written(9007199254740993.0 * 4);
  EXPECT_NE(text.find_first_of(".e"), std::string::npos) << text;
  check(9007199254740993.0 * 4);
}

TEST(WriteShortestFloat, AroundPowersOfTwoAndTen_Exact) {
  for (int exponent = -1074; exponent < 1024; ++exponent) {
    const double power = std::ldexp(1.0, exponent);
    for (const double value : {power, std::nextafter(power, 0.0), std::nextafter(power, HUGE_VAL), -power}) {
      if (std::isfinite(value)) check(value);
    }
  }
  for (int exponent = -320; exponent <= 308; ++exponent) {
    const double power = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
    for (const double value : {power, std::nextafter(power, 0.0), std::nextafter(power, HUGE_VAL)}) check(value);
  }
}

TEST(WriteShortestFloat, RandomDecimals_AsTheyWereGiven) {
  qz_test::SeededRandom random;
  for (int i = 0; i < rounds(400000); ++i) {
    const long long limit = 1LL << random.between(1, 50);
    const long long decimals = random.between(0, 9);
    const double value =
        static_cast<double>(random.between(-limit, limit)) / std::pow(10.0, static_cast<double>(decimals));
    check(value);
    check(std::nextafter(value, HUGE_VAL));
  }
}

TEST(WriteShortestFloat, RandomBits_Exact) {
  qz_test::SeededRandom random;
  for (int i = 0; i < rounds(200000); ++i) {
    const auto bits = static_cast<std::uint64_t>(
        random.between(std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()));
    const auto value = std::bit_cast<double>(bits);
    if (std::isfinite(value)) check(value);
  }
}

TEST(WriteShortestFloat, OtherRoundingModeAndLocale_TheSameTexts) {
  const qz_test::CLocale locale("de_DE.UTF-8");
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    const double values[] = {0.1, 0.3, 2.675, 1.005, 1e-5, 123456.789, 1e23};
    std::string texts;
    std::fesetround(mode);
    for (const double value : values) texts += written(value) + ' ';
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(texts, "0.1 0.3 2.675 1.005 1e-05 123456.789 1e+23 ");
  }
}

}  // namespace
}  // namespace qzlog
