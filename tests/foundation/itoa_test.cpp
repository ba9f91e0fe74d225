#include "foundation/itoa.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "tests/support/support.h"

namespace {

/// The text written for `value`; a test failure when a byte after its terminator was touched.
template <typename T>
std::string digits(T value) {
  char buffer[32];
  std::memset(buffer, '#', sizeof(buffer));
  my_itoa(buffer, value);
  const std::string text = buffer;
  for (std::size_t i = text.size() + 1; i < sizeof(buffer); ++i)
    EXPECT_EQ(buffer[i], '#') << "at " << i << ": " << text;
  return text;
}

TEST(MyItoa, Zero_IsOneDigit) {
  EXPECT_EQ(digits(0U), "0");
  EXPECT_EQ(digits(0), "0");
}

TEST(MyItoa, MinusOne_HasASign) { EXPECT_EQ(digits(-1), "-1"); }

TEST(MyItoa, MostNegativeInt_IsWrittenInFull) { EXPECT_EQ(digits(INT_MIN), "-2147483648"); }

TEST(MyItoa, LargestUnsigned_IsWrittenInFull) { EXPECT_EQ(digits(4294967295U), "4294967295"); }

TEST(MyItoa, LargestInt_IsWrittenInFull) { EXPECT_EQ(digits(INT_MAX), "2147483647"); }

TEST(MyItoa, AroundPowersOfTen_NoPaddingAndNoLostZero) {
  for (unsigned power = 10; power != 1410065408U; power *= 10) {  // 10^10 wraps to that
    for (unsigned value = power - 2; value <= power + 2; ++value) {
      EXPECT_EQ(digits(value), std::to_string(value));
      const int negative = -static_cast<int>(value % 2147483647U);
      EXPECT_EQ(digits(negative), std::to_string(negative));
    }
  }
}

TEST(MyItoa, RandomValues_AgreeWithTheStandardLibrary) {
  qz_test::SeededRandom random;
  SCOPED_TRACE(random.trace());
  for (int i = 0; i < 20000; ++i) {
    const auto bits = random.between(1, 32);
    const auto value = static_cast<unsigned>(random.between(0, (1LL << bits) - 1));
    ASSERT_EQ(digits(value), std::to_string(value));
    ASSERT_EQ(digits(static_cast<int>(value)), std::to_string(static_cast<int>(value)));
  }
}

TEST(MyItoa, PreviousContents_AreReplaced) {
  char buffer[12] = "abcdefghijk";
  my_itoa(buffer, 42);
  EXPECT_STREQ(buffer, "42");
}

}  // namespace
