#include "tools/report/rule_table.h"

#include <gtest/gtest.h>

#include <set>

#include "tools/catalog/catalog_rules.h"
#include "tools/configuration/config_rules.h"
#include "tools/count/counter_reader.h"
#include "tools/diff/diff_rules.h"
#include "tools/inspect/inspect_rules.h"
#include "tools/logs/entry_error.h"
#include "tools/report/check_rules.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

enum class Sample { kOne, kTwo };

constexpr RuleInfo kSamples[] = {{Sample::kOne, "one", "The first."},
                                 {Sample::kTwo, "two", "The second.", true, "second number-two"}};
static_assert(is_whole_table(kSamples, Sample::kTwo));

const RuleInfo& rule_info(Sample rule) { return kSamples[static_cast<std::size_t>(rule)]; }

TEST(IsWholeTable, RowAtAnotherPlaceOrMissing_IsNone) {
  constexpr RuleInfo kSwapped[] = {{Sample::kTwo, "two", "."}, {Sample::kOne, "one", "."}};
  constexpr RuleInfo kShort[] = {{Sample::kOne, "one", "."}};
  EXPECT_FALSE(is_whole_table(kSwapped, Sample::kTwo));
  EXPECT_FALSE(is_whole_table(kShort, Sample::kTwo));
}

TEST(FindRule, NameOrFormerName_FindsTheRow) {
  const std::span<const RuleInfo> table = kSamples;
  EXPECT_EQ(find_rule(table, "one"), &kSamples[0]);
  EXPECT_EQ(find_rule(table, "two"), &kSamples[1]);
  EXPECT_EQ(find_rule(table, "second"), &kSamples[1]);
  EXPECT_EQ(find_rule(table, "number-two"), &kSamples[1]);
}

TEST(FindRule, OtherNames_FindNothing) {
  const std::span<const RuleInfo> table = kSamples;
  for (const char* const name : {"", "On", "number", "second number-two", "three"}) {
    EXPECT_EQ(find_rule(table, name), nullptr) << name;
  }
}

TEST(AnyRule, RulesOfOneTable_AreTheirRows) {
  const AnyRule rule = Sample::kTwo;
  EXPECT_EQ(rule.name(), "two");
  EXPECT_TRUE(rule == Sample::kTwo);
  EXPECT_FALSE(rule == Sample::kOne);
  EXPECT_TRUE(rule == AnyRule(kSamples[1]));
}

TEST(AnyRule, RulesOfOneNameInTwoTables_AreNotTheSame) {
  EXPECT_EQ(rule_name(Rule::kBadDefinitionFile),
            rule_name(qzlog_tool::entry_rule(qzlog::LineRule::kBadDefinitionFile)));
  EXPECT_FALSE(AnyRule(Rule::kBadDefinitionFile) == qzlog_tool::entry_rule(qzlog::LineRule::kBadDefinitionFile));
}

void expect_names_and_meanings(std::span<const RuleInfo> table) {
  std::set<std::string_view> names;
  for (const RuleInfo& rule : table) {
    EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
    EXPECT_FALSE(rule.name.empty());
    EXPECT_EQ(rule.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"), std::string_view::npos)
        << rule.name;
    EXPECT_TRUE(rule.meaning.ends_with('.')) << rule.name;
  }
}

TEST(RuleTables, Names_AreUniqueLowerCaseWordsWithAMeaning) {
  for (const std::span<const RuleInfo> table :
       {all_rules(), qzlog_tool::all_check_rules(), qzlog_catalog::all_catalog_rules(), qzlog_tool::all_entry_rules(),
        qzlog_tool::all_config_rules(), qzlog_tool::all_counter_rules(), qzlog_tool::all_inspect_rules()}) {
    expect_names_and_meanings(table);
  }
}

}  // namespace
}  // namespace qzlog_compiler
