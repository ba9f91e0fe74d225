#include "tools/count/line_ranges.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/seeded_random.h"

namespace qzlog_tool {
namespace {

std::string text_of(const LineRanges& numbers) {
  std::string text;
  for (const auto& [first, last] : numbers.ranges()) text += std::to_string(first) + '-' + std::to_string(last) + ' ';
  return text;
}

TEST(LineRanges, RangesThatTouch_BecomeOne) {
  LineRanges numbers;
  EXPECT_EQ(numbers.add(5, 9), 5U);
  EXPECT_EQ(numbers.add(20, 20), 1U);
  EXPECT_EQ(numbers.add(10, 12), 3U);
  EXPECT_EQ(text_of(numbers), "5-12 20-20 ");
  EXPECT_EQ(numbers.add(4, 20), 8U);
  EXPECT_EQ(text_of(numbers), "4-20 ");
  EXPECT_EQ(numbers.add(6, 19), 0U);
  EXPECT_EQ(numbers.count(1, 5), 2U);
  EXPECT_EQ(numbers.count(21, 30), 0U);
}

TEST(LineRanges, EndsOfNumbers_AreTaken) {
  LineRanges numbers;
  EXPECT_EQ(numbers.add(0, 0), 1U);
  EXPECT_EQ(numbers.add(UINT64_MAX, UINT64_MAX), 1U);
  EXPECT_EQ(numbers.add(UINT64_MAX - 1, UINT64_MAX), 1U);
  EXPECT_EQ(numbers.add(0, 1), 1U);
  EXPECT_EQ(text_of(numbers), "0-1 18446744073709551614-18446744073709551615 ");
  EXPECT_EQ(numbers.add(2, UINT64_MAX - 2), UINT64_MAX - 3);
  EXPECT_EQ(text_of(numbers), "0-18446744073709551615 ");
}

TEST(LineRanges, RandomRanges_AreThoseOfASet) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 200; ++round) {
    LineRanges numbers;
    std::set<std::uint64_t> model;
    for (int step = 0; step < 60; ++step) {
      const auto first = static_cast<std::uint64_t>(random.between(0, 120));
      const std::uint64_t last = first + static_cast<std::uint64_t>(random.between(0, random.one_in(4) ? 30 : 2));
      const std::size_t before = model.size();
      std::uint64_t there = 0;
      for (std::uint64_t number = first; number <= last; ++number) there += model.count(number);
      ASSERT_EQ(numbers.count(first, last), there);
      for (std::uint64_t number = first; number <= last; ++number) model.insert(number);
      ASSERT_EQ(numbers.add(first, last), model.size() - before);
    }
    LineRanges expected;
    for (const std::uint64_t number : model) expected.add(number, number);
    ASSERT_EQ(text_of(numbers), text_of(expected));
  }
}

}  // namespace
}  // namespace qzlog_tool
