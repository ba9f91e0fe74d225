#include "foundation/itoa.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "tests/support/support.h"

using namespace qzlog;

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

// ---- without a terminator ----

/// The characters written in front of the end; a test failure when a byte outside them was touched.
std::string written(unsigned value) {
  char memory[kMaxIntegerText + 20];
  std::memset(memory, '#', sizeof(memory));
  char* const end = memory + 10 + kMaxIntegerText;
  char* const begin = write_integer(end, value);
  for (const char* byte = memory; byte != memory + sizeof(memory); ++byte) {
    EXPECT_TRUE(*byte == '#' || (byte >= begin && byte < end)) << value;
  }
  EXPECT_EQ(static_cast<unsigned>(end - begin), count_digits(value)) << value;
  return std::string(begin, end);
}

TEST(WriteInteger, Extremes_InFull) {
  EXPECT_EQ(written(0), "0");
  EXPECT_EQ(written(9), "9");
  EXPECT_EQ(written(10), "10");
  EXPECT_EQ(written(2147483648U), "2147483648");
  EXPECT_EQ(written(4294967295U), "4294967295");
  EXPECT_EQ(digits(INT_MIN).size(), kMaxIntegerText);
}

TEST(WriteInteger, AroundEveryPowerOfTenAndAtBothEnds_AsTheStandardLibrary) {
  for (unsigned long long power = 1; power <= 10000000000ULL; power *= 10) {
    for (unsigned offset = 0; offset < 2000; ++offset) {
      const auto value = static_cast<unsigned>(power - 1000 + offset);
      ASSERT_EQ(written(value), std::to_string(value));
    }
  }
  for (unsigned value = 0; value <= 20000; ++value) {
    ASSERT_EQ(written(value), std::to_string(value));
    ASSERT_EQ(written(UINT_MAX - value), std::to_string(UINT_MAX - value));
  }
}

}  // namespace
