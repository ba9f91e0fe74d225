#include "config/text_tbl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::AllocationFailure;
using qz_test::FailEveryAllocation;
using qz_test::SeededRandom;

/// Shows how many entries share a bucket.
class OpenTable : public TextTable<unsigned> {
 public:
  using TextTable::TextTable;

  std::size_t longest_chain() const {
    std::size_t longest = 0;
    for (unsigned i = 0; i < size; ++i) {
      std::size_t length = 0;
      for (const auto* node = slots[i].head; node != nullptr; node = node->next) ++length;
      longest = std::max(longest, length);
    }
    return longest;
  }
};

std::optional<unsigned> find(const TextTable<unsigned>& table, const std::string& prefix, const std::string& suffix) {
  const unsigned* const value = table.find(prefix.c_str(), suffix.c_str());
  return value == nullptr ? std::nullopt : std::optional<unsigned>(*value);
}

TEST(TextTable, Empty_FindsNothing) {
  const TextTable<unsigned> table(3);
  EXPECT_EQ(find(table, "", ""), std::nullopt);
  EXPECT_EQ(find(table, "a", "b"), std::nullopt);
}

TEST(TextTable, TextInTwoPieces_FoundHoweverItIsCut) {
  TextTable<unsigned> table(3);
  table.at("storage.LogLevelLow") = 5;
  const std::string name = "storage.LogLevelLow";
  for (std::size_t cut = 0; cut <= name.size(); ++cut) {
    EXPECT_EQ(find(table, name.substr(0, cut), name.substr(cut)), 5U) << cut;
    EXPECT_EQ(find(table, name.substr(0, cut) + "x", name.substr(cut)), std::nullopt) << cut;
    EXPECT_EQ(find(table, name.substr(0, cut), name.substr(cut) + "x"), std::nullopt) << cut;
  }
  EXPECT_EQ(find(table, "storage.LogLevel", ""), std::nullopt);
}

TEST(TextTable, EmptyText_IsAKey) {
  TextTable<unsigned> table(3);
  table.at("") = 7;
  EXPECT_EQ(find(table, "", ""), 7U);
}

TEST(TextTable, KeyAgain_KeepsItsValue) {
  TextTable<unsigned> table(3);
  table.at("a") = 7;
  EXPECT_EQ(table.at("a"), 7U);
  table.at("a") = 8;
  EXPECT_EQ(find(table, "a", ""), 8U);
}

TEST(TextTable, Cleared_EmptyAndUsable) {
  TextTable<unsigned> table(3);
  for (unsigned i = 0; i < 100; ++i) table.at(std::to_string(i).c_str()) = i;
  table.clear();
  EXPECT_EQ(find(table, "5", ""), std::nullopt);
  table.at("5") = 6;
  EXPECT_EQ(find(table, "5", ""), 6U);
  unsigned entries = 0;
  table.for_each([&entries](const qz_String&, unsigned) { ++entries; });
  EXPECT_EQ(entries, 1U);
}

TEST(TextTable, ForEach_VisitsAllAndMayChangeThem) {
  TextTable<unsigned> table(3);
  for (unsigned i = 0; i < 50; ++i) table.at(std::to_string(i).c_str()) = i;
  std::map<std::string, unsigned> visited;
  table.for_each([&visited](const qz_String& key, unsigned& value) {
    visited[key.c_str()] = value;
    value *= 2;
  });
  ASSERT_EQ(visited.size(), 50U);
  for (const auto& [key, value] : visited) {
    EXPECT_EQ(std::to_string(value), key);
    EXPECT_EQ(find(table, key, ""), 2 * value);
  }
}

TEST(TextTable, RandomTexts_AsAMap) {
  SeededRandom random;
  TextTable<unsigned> table(3);
  std::map<std::string, unsigned> model;
  for (unsigned round = 0; round < 20000; ++round) {
    // Few letters: texts repeat, and begin and end alike.
    std::string text(static_cast<std::size_t>(random.between(0, 12)), 'a');
    for (char& character : text) character = random.one_in(3) ? 'b' : 'a';
    const auto cut = static_cast<std::size_t>(random.between(0, static_cast<long long>(text.size())));
    const auto found = model.find(text);
    const auto expected = found == model.end() ? std::nullopt : std::optional<unsigned>(found->second);
    ASSERT_EQ(find(table, text.substr(0, cut), text.substr(cut)), expected) << text << " cut at " << cut;
    if (random.one_in(2)) table.at(text.c_str()) = model[text] = round;
  }
}

TEST(TextTable, ThousandsOfAlikeTexts_ChainsStayShort) {
  OpenTable numbered(3);
  OpenTable zero_to_f(3);
  OpenTable long_ones(3);
  for (unsigned i = 0; i < 20000; ++i) {
    numbered.at(("section.Key" + std::to_string(i)).c_str()) = i;
    std::string digits;
    for (unsigned rest = i + 1; rest != 0; rest /= 16) digits += "0123456789abcdef"[rest % 16];
    zero_to_f.at(digits.c_str()) = i;
    long_ones.at((digits + std::string(100, 'x')).c_str()) = i;
  }
  EXPECT_LE(numbered.longest_chain(), 20U);
  EXPECT_LE(zero_to_f.longest_chain(), 20U);
  EXPECT_LE(long_ones.longest_chain(), 20U);
  EXPECT_EQ(find(numbered, "section.", "Key19999"), 19999U);
}

TEST(TextTable, Find_TakesNoMemory) {
  TextTable<unsigned> table(3);
  const std::string name(100, 'n');
  table.at((name + "key").c_str()) = 5;
  const unsigned* value = nullptr;
  bool happened = false;
  {
    const AllocationFailure failure(1, AllocationFailure::kFromThenOn);
    value = table.find(name.c_str(), "key");
    happened = failure.happened();
  }
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(*value, 5U);
  EXPECT_FALSE(happened);
}

TEST(TextTable, NoMemoryToAddOrToGrow_ThrowsAndTheOthersStay) {
  TextTable<unsigned> table(3);
  for (const std::string key : {"a", "b", "c"}) table.at(key.c_str()) = static_cast<unsigned>(key[0]);
  const std::string long_key(100, 'k');  // longer than the texts for which a thread keeps memory
  const auto others_stay = [&table] {
    for (const std::string key : {"a", "b", "c"}) EXPECT_EQ(find(table, key, ""), static_cast<unsigned>(key[0]));
    unsigned entries = 0;
    table.for_each([&entries](const qz_String&, unsigned) { ++entries; });
    EXPECT_EQ(entries, 3U);
  };
  EXPECT_GE(FailEveryAllocation([&] { table.at(long_key.c_str()) = 1; }, others_stay), 3U);
  EXPECT_EQ(find(table, long_key, ""), 1U);
}

}  // namespace
