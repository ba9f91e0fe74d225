#include "tools/choice/number_ranges.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "tests/support/support.h"

namespace {

using qzlog_tool::NumberRange;
using qzlog_tool::NumberSet;
using qzlog_tool::parse_range;
using qzlog_tool::parse_ranges;

TEST(NumberRanges, EachForm_GivesItsRange) {
  EXPECT_EQ(parse_range("5", 9), (NumberRange{5, 5}));
  EXPECT_EQ(parse_range("5..9", 9), (NumberRange{5, 9}));
  EXPECT_EQ(parse_range("5..", 9), (NumberRange{5, 9}));
  EXPECT_EQ(parse_range("..3", 9), (NumberRange{0, 3}));
  EXPECT_EQ(parse_range("0x10..0xff", 4294967295), (NumberRange{16, 255}));
  EXPECT_EQ(parse_range("007", 9), (NumberRange{7, 7}));
  EXPECT_EQ(parse_range("..4294967295", 4294967295), (NumberRange{0, 4294967295}));
}

TEST(NumberRanges, OtherTexts_GiveNone) {
  for (const char* text : {"", "..", "9..5", "10", "5..10", "-1", "-0", "5...9", "a", "5..a", "1,2", " 5", "5 ", "0x",
                           "4294967296", "99999999999999999999"}) {
    EXPECT_FALSE(parse_range(text, 9)) << text;
  }
  EXPECT_FALSE(parse_range("4294967296", 4294967295));
  for (const char* text : {"", "1,", ",1", "1,,2", "1;2"}) EXPECT_FALSE(parse_ranges(text, 9)) << text;
}

TEST(NumberRanges, List_GivesEach) {
  EXPECT_EQ(parse_ranges("1,3..5,0x7", 9), (std::vector<NumberRange>{{1, 1}, {3, 5}, {7, 7}}));
}

TEST(NumberSet, RandomRanges_HoldWhatOneOfThemHolds) {
  qz_test::SeededRandom random;
  for (int round = 0; round < qz_test::rounds(400); ++round) {
    std::vector<NumberRange> ranges(random.below(8));
    const std::uint32_t base = random.one_in(2) ? 0 : 4294967295U - 60;
    for (NumberRange& range : ranges) {
      range.first = base + static_cast<std::uint32_t>(random.below(50));
      range.last = range.first + static_cast<std::uint32_t>(random.below(10));
    }
    const NumberSet set(ranges);
    for (std::uint32_t offset = 0; offset <= 60; ++offset) {
      const std::uint32_t number = base + offset;
      bool expected = false;
      for (const NumberRange& range : ranges) expected = expected || range.holds(number);
      ASSERT_EQ(set.holds(number), expected) << number;
    }
    for (std::size_t i = 1; i < set.ranges().size(); ++i) {
      EXPECT_GT(set.ranges()[i].first, set.ranges()[i - 1].last + 1);
    }
  }
}

TEST(NumberSet, Empty_HoldsNothing) {
  EXPECT_FALSE(NumberSet().holds(0));
  EXPECT_FALSE(NumberSet(std::vector<NumberRange>()).holds(4294967295));
}

}  // namespace
