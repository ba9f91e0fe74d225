#include "tools/render/entry_error.h"

#include <gtest/gtest.h>

#include <set>
#include <string_view>

namespace {

using qzlog_tool::all_entry_rules;
using qzlog_tool::EntryRuleInfo;

TEST(EntryRules, Table_StandsInTheOrderOfTheEnumeration) {
  for (std::size_t index = 0; index < all_entry_rules().size(); ++index) {
    EXPECT_EQ(static_cast<std::size_t>(all_entry_rules()[index].rule), index);
  }
  EXPECT_EQ(all_entry_rules().back().rule, qzlog_tool::EntryRule::kOutOfMemory);
}

TEST(EntryRules, Names_AreDistinctLowerCaseWords) {
  std::set<std::string_view> names;
  for (const EntryRuleInfo& info : all_entry_rules()) {
    EXPECT_EQ(info.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string_view::npos) << info.name;
    EXPECT_FALSE(info.name.starts_with('-') || info.name.ends_with('-')) << info.name;
    EXPECT_TRUE(names.insert(info.name).second) << info.name;
    EXPECT_EQ(info.meaning.back(), '.') << info.name;
  }
}

}  // namespace
