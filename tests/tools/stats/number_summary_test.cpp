#include "tools/stats/number_summary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/support/support.h"

namespace qzlog_tool {
namespace {

/// The number at a place of all in their order.
double place_of(std::vector<double> numbers, unsigned percent) {
  std::sort(numbers.begin(), numbers.end());
  const std::size_t place = (numbers.size() * percent + 99) / 100;
  return numbers[place - 1];
}

std::vector<double> random_numbers(qz_test::RandomNumbers& random, std::size_t count, int kind) {
  std::vector<double> numbers;
  for (std::size_t index = 0; index < count; ++index) {
    const auto integer = static_cast<double>(random.between(-1'000'000, 1'000'000));
    numbers.push_back(kind == 0 ? integer : kind == 1 ? std::abs(integer) : integer / 4096);
  }
  return numbers;
}

TEST(NumberSummary, FewNumbers_HaveExactPlaces) {
  NumberSummary summary;
  for (const double number : {7.0, -2.0, 3.0, 3.0}) summary.add(number);
  EXPECT_EQ(summary.count(), 4U);
  EXPECT_EQ(summary.minimum(), -2);
  EXPECT_EQ(summary.maximum(), 7);
  EXPECT_EQ(summary.mean(), 2.75);
  EXPECT_EQ(summary.quantile(25), -2);
  EXPECT_EQ(summary.quantile(50), 3);
  EXPECT_EQ(summary.quantile(99), 7);
  EXPECT_EQ(summary.error(), 0);
}

TEST(NumberSummary, NumbersThatAreNotFinite_AreLeftOut) {
  NumberSummary summary;
  summary.add(std::numeric_limits<double>::quiet_NaN());
  summary.add(-std::numeric_limits<double>::infinity());
  EXPECT_EQ(summary.count(), 0U);
}

TEST(NumberSummary, RandomNumbers_AreWithinTheStatedError) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 60; ++round) {
    const std::vector<double> numbers = random_numbers(random, 1 + random.below(3000), round % 3);
    NumberSummary summary;
    NumberSummary parts[2];
    for (const double number : numbers) {
      summary.add(number);
      parts[random.below(2)].add(number);
    }
    for (std::size_t shrunk = random.below(7); shrunk > 0; --shrunk) parts[0].shrink();
    for (std::size_t shrunk = random.below(7); shrunk > 0; --shrunk) parts[1].shrink();
    parts[0].add(parts[1]);
    for (const NumberSummary* const made : {&summary, &parts[0]}) {
      EXPECT_EQ(made->count(), numbers.size());
      EXPECT_EQ(made->minimum(), *std::min_element(numbers.begin(), numbers.end()));
      EXPECT_EQ(made->maximum(), *std::max_element(numbers.begin(), numbers.end()));
      for (const unsigned percent : {1U, 50U, 99U, 100U}) {
        const double expected = place_of(numbers, percent);
        // Of integers the middle of a step is rounded.
        const double rounding = made->error() > 0 ? 1 : 0;
        EXPECT_NEAR(made->quantile(percent), expected, std::abs(expected) * made->error() + rounding);
      }
    }
    EXPECT_EQ(summary.error(), 0);
  }
}

TEST(NumberSummary, MoreNumbersThanAreKept_AreWithinOnePercent) {
  qz_test::SeededRandom random;
  NumberSummary summary;
  const std::vector<double> numbers = random_numbers(random, 600'000, 1);
  for (const double number : numbers) summary.add(number);
  EXPECT_LT(summary.held(), 10'000U);
  EXPECT_GT(summary.error(), 0);
  EXPECT_LE(summary.error(), 0.01);
  for (const unsigned percent : {1U, 50U, 99U}) {
    const double expected = place_of(numbers, percent);
    EXPECT_NEAR(summary.quantile(percent), expected, expected * summary.error() + 1);
  }
}

TEST(NumberSummary, NumbersOfAllSizes_TakeLittleMemory) {
  NumberSummary summary;
  summary.shrink();
  for (int exponent = -1070; exponent < 1020; ++exponent) {
    for (int part = 16; part < 32; ++part) {
      summary.add(std::ldexp(part, exponent - 5));
      summary.add(-std::ldexp(part, exponent - 5));
    }
  }
  EXPECT_LE(summary.held(), 8192U);
  EXPECT_LT(summary.error(), 0.5);
}

TEST(NumberSummary, SumOfUnequalNumbers_KeepsTheSmallOnes) {
  NumberSummary summary;
  for (const double number : {1e16, 1.0, -1e16, 1.0}) summary.add(number);
  EXPECT_EQ(summary.mean(), 0.5);
}

}  // namespace
}  // namespace qzlog_tool
