#include "tools/choice/seen_numbers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <utility>

#include "tests/support/support.h"

namespace {

using qzlog_tool::SeenNumbers;

/// Room for so many ranges of so many writers, whose names have two characters.
constexpr std::size_t room_for(std::size_t ranges, std::size_t writers) {
  return ranges * SeenNumbers::kRangeBytes + writers * (SeenNumbers::kWriterBytes + 2);
}

TEST(SeenNumbers, RandomNumbers_AreNewOnce) {
  qz_test::SeededRandom random;
  SeenNumbers seen;
  std::set<std::pair<std::string, std::uint64_t>> plain;
  for (int round = 0; round < qz_test::rounds(20000); ++round) {
    const std::string writer = "host/" + std::to_string(random.below(3)) + "/1";
    const auto number = static_cast<std::uint64_t>(random.between(0, 4000));
    ASSERT_EQ(seen.add(writer, number), plain.emplace(writer, number).second) << writer << " " << number;
  }
  EXPECT_EQ(seen.forgotten(), 0u);
}

TEST(SeenNumbers, FirstAndLastNumber_AreNewOnce) {
  SeenNumbers seen;
  for (const std::uint64_t number : {std::uint64_t{0}, std::numeric_limits<std::uint64_t>::max(),
                                     std::numeric_limits<std::uint64_t>::max() - 1, std::uint64_t{1}}) {
    EXPECT_TRUE(seen.add("ww", number));
    EXPECT_FALSE(seen.add("ww", number));
  }
}

TEST(SeenNumbers, NumbersInARow_AreOneRange) {
  SeenNumbers seen(room_for(1, 1));
  for (std::uint64_t number = 0; number < 100000; ++number) ASSERT_TRUE(seen.add("ww", number));
  EXPECT_EQ(seen.forgotten(), 0u);
  for (std::uint64_t number = 0; number < 100000; ++number) ASSERT_FALSE(seen.add("ww", number));
}

TEST(SeenNumbers, MoreGapsThanAreKept_TheLowestAreForgotten) {
  SeenNumbers seen(room_for(10, 1));
  for (std::uint64_t number = 0; number < 40; number += 2) EXPECT_TRUE(seen.add("ww", number));
  EXPECT_EQ(seen.forgotten(), 10u);
  EXPECT_TRUE(seen.add("ww", 0));
  EXPECT_FALSE(seen.add("ww", 38));
}

TEST(SeenNumbers, MoreWritersThanAreKept_OthersAreForgotten) {
  SeenNumbers seen(room_for(3, 3));
  for (int writer = 0; writer < 10; ++writer) EXPECT_TRUE(seen.add("w" + std::to_string(writer), 5));
  EXPECT_EQ(seen.forgotten(), 7u);
  EXPECT_FALSE(seen.add("w9", 5));
}

TEST(SeenNumbers, LongNames_TakeOfTheSameMemory) {
  SeenNumbers seen(100'000);
  for (int writer = 0; writer < 100; ++writer) {
    const std::string name = std::string(40'000, 'w') + std::to_string(writer);
    EXPECT_TRUE(seen.add(name, 5));
    EXPECT_FALSE(seen.add(name, 5));
  }
  EXPECT_EQ(seen.forgotten(), 98u);
  EXPECT_TRUE(seen.add(std::string(1'000'000, 'w'), 5));
  EXPECT_EQ(seen.forgotten(), 100u);
}

}  // namespace
