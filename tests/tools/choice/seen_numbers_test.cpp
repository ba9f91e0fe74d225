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
    EXPECT_TRUE(seen.add("w", number));
    EXPECT_FALSE(seen.add("w", number));
  }
}

TEST(SeenNumbers, NumbersInARow_AreOneRange) {
  SeenNumbers seen(1);
  for (std::uint64_t number = 0; number < 100000; ++number) ASSERT_TRUE(seen.add("w", number));
  EXPECT_EQ(seen.forgotten(), 0u);
  for (std::uint64_t number = 0; number < 100000; ++number) ASSERT_FALSE(seen.add("w", number));
}

TEST(SeenNumbers, MoreGapsThanAreKept_TheLowestAreForgotten) {
  SeenNumbers seen(10);
  for (std::uint64_t number = 0; number < 40; number += 2) EXPECT_TRUE(seen.add("w", number));
  EXPECT_EQ(seen.forgotten(), 10u);
  EXPECT_TRUE(seen.add("w", 0));
  EXPECT_FALSE(seen.add("w", 38));
}

TEST(SeenNumbers, MoreWritersThanAreKept_OthersAreForgotten) {
  SeenNumbers seen(3);
  for (int writer = 0; writer < 10; ++writer) EXPECT_TRUE(seen.add("w" + std::to_string(writer), 5));
  EXPECT_EQ(seen.forgotten(), 7u);
  EXPECT_FALSE(seen.add("w9", 5));
}

}  // namespace
