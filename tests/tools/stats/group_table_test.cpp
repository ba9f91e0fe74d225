#include "tools/stats/group_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>

#include "tests/support/support.h"

namespace qzlog_tool {
namespace {

GroupKey text_key(std::string_view text) { return GroupKey::of(text); }

TEST(GroupTable, Keys_AreKeptApartByKind) {
  GroupTable table;
  for (const GroupKey& key : {GroupKey::of(7), text_key("7"), text_key(""), GroupKey(), GroupKey::of(7)}) {
    table.count(key);
  }
  std::map<GroupKey, std::uint64_t> counts;
  for (const GroupTable::Row& row : table.rows()) counts[row.key] = row.group->count;
  EXPECT_EQ(counts, (std::map<GroupKey, std::uint64_t>{
                        {GroupKey(), 1}, {GroupKey::of(7), 2}, {text_key(""), 1}, {text_key("7"), 1}}));
}

// Some keys come often, most once or twice: what is said of each is held against plain counts.
TEST(GroupTable, MoreGroupsThanMemory_KeepLargeOnesAndSayWhatTheyLack) {
  qz_test::SeededRandom random;
  constexpr std::size_t kMostBytes = 100'000;
  GroupTable table(kMostBytes);
  std::map<std::string, std::uint64_t> expected;
  constexpr std::uint64_t kLines = 200'000;
  for (std::uint64_t line = 0; line < kLines; ++line) {
    const std::string key =
        random.one_in(3) ? "often " + std::to_string(random.below(20)) : "rare " + std::to_string(random.below(50'000));
    ++expected[key];
    table.count(text_key(key));
  }
  std::uint64_t sum = table.forgotten().count;
  std::size_t often = 0;
  EXPECT_GT(sum, 0U);
  EXPECT_LT(table.rows().size(), 1000U);
  for (const GroupTable::Row& row : table.rows()) {
    const std::uint64_t count = expected[std::string(row.key.text)];
    sum += row.group->count;
    EXPECT_LE(row.group->count, count);
    EXPECT_GE(row.group->count + row.group->missed, count);
    if (row.key.text.starts_with("often")) ++often;
  }
  EXPECT_EQ(sum, kLines);
  EXPECT_EQ(often, 20U);
}

TEST(GroupTable, NumbersOfManyGroups_AreHeldWithinTheBound) {
  constexpr std::size_t kMostNumbers = 1000;
  GroupTable table(GroupTable::kMostBytes, kMostNumbers);
  for (int number = 0; number < 20'000; ++number) {
    Group& group = table.count(GroupKey::of(number % 50));
    table.add_number(group, number);
  }
  std::size_t held = 0;
  for (const GroupTable::Row& row : table.rows()) {
    held += row.group->numbers.held();
    EXPECT_EQ(row.group->numbers.count(), 400U);
    EXPECT_EQ(row.group->numbers.minimum(), static_cast<double>(row.key.number));
  }
  EXPECT_LE(held, kMostNumbers + 1);
}

}  // namespace
}  // namespace qzlog_tool
