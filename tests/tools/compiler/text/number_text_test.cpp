#include "tools/compiler/text/number_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using qzlog_compiler::NumberForm;
using qzlog_compiler::parse_number;
using qzlog_compiler::parse_unsigned;

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

TEST(ParseNumber, DecimalAndHexadecimal_AreRead) {
  const struct {
    const char* text;
    std::int64_t number;
  } cases[] = {
      {"0", 0},     {"10", 10},    {"010", 10},    {"-7", -7},
      {"0x1F", 31}, {"0XfF", 255}, {"-0x10", -16}, {"9223372036854775807", kHighest},
  };
  for (const auto& row : cases) EXPECT_EQ(parse_number(row.text, kLowest, kHighest), row.number) << row.text;
}

TEST(ParseNumber, OtherTexts_AreRefused) {
  for (const char* const text : {"", "-", "--1", "+1", " 1", "1 ", "1a", "0x", "0xG", "0x-1", "-0x", "a", "1.5", "1e3",
                                 "9223372036854775808", "99999999999999999999"}) {
    EXPECT_FALSE(parse_number(text, kLowest, kHighest).has_value()) << text;
  }
}

TEST(ParseNumber, Bounds_AreInclusive) {
  EXPECT_EQ(parse_number("3", 3, 5), 3);
  EXPECT_EQ(parse_number("5", 3, 5), 5);
  EXPECT_FALSE(parse_number("2", 3, 5).has_value());
  EXPECT_FALSE(parse_number("6", 3, 5).has_value());
}

TEST(ParseUnsigned, Forms_TakeTheirDigits) {
  EXPECT_EQ(parse_unsigned("010", NumberForm::kDecimal), 10U);
  EXPECT_EQ(parse_unsigned("0aF", NumberForm::kHexadecimal), 0xAFU);
  EXPECT_EQ(parse_unsigned("0XaF", NumberForm::kEither), 0xAFU);
  EXPECT_EQ(parse_unsigned("010", NumberForm::kEither), 10U);
  for (const char* const text : {"", "-1", "+1", " 1", "1 ", "0x1", "a", "1.0"}) {
    EXPECT_FALSE(parse_unsigned(text, NumberForm::kDecimal)) << text;
  }
  for (const char* const text : {"", "-1", "0x1", "g"}) EXPECT_FALSE(parse_unsigned(text, NumberForm::kHexadecimal));
  for (const char* const text : {"", "0x", "0x-1", "-0x1", "x1", "a"}) {
    EXPECT_FALSE(parse_unsigned(text, NumberForm::kEither)) << text;
  }
}

TEST(ParseUnsigned, TooLarge_GivesTheLargest) {
  EXPECT_EQ(parse_unsigned("18446744073709551614", NumberForm::kDecimal), 0xFFFFFFFFFFFFFFFEU);
  EXPECT_EQ(parse_unsigned("18446744073709551616", NumberForm::kDecimal), 0xFFFFFFFFFFFFFFFFU);
  EXPECT_EQ(parse_unsigned("0x10000000000000000", NumberForm::kEither), 0xFFFFFFFFFFFFFFFFU);
  EXPECT_FALSE(parse_unsigned("18446744073709551616x", NumberForm::kDecimal));
}

}  // namespace
