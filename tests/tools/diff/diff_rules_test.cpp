#include "tools/diff/diff_rules.h"

#include <gtest/gtest.h>

#include <set>
#include <string_view>

namespace {

using namespace qzlog_compiler;

TEST(DiffRules, Names_AreUniqueAndFoundAgain) {
  std::set<std::string_view> names;
  for (const DiffRuleInfo& info : all_diff_rules()) {
    EXPECT_TRUE(names.insert(info.name).second) << info.name;
    const auto rule = static_cast<DiffRule>(info.number);
    EXPECT_EQ(find_diff_rule(info.name), rule);
    EXPECT_EQ(&diff_rule_info(rule), &info);
    EXPECT_EQ(info.acceptable, info.verdicts != kSafe) << info.name;
  }
  EXPECT_EQ(find_diff_rule("no-such-rule"), std::nullopt);
}

/// The policy: programs, recorded entries, filters and extensions ask for a major version, readers and translators for
/// a minor one. The version's own rules ask for nothing.
TEST(DiffRules, Step_FollowsFromTheVerdicts) {
  for (const DiffRuleInfo& info : all_diff_rules()) {
    if (info.name.starts_with("version-")) {
      EXPECT_EQ(info.step, VersionStep::kNone) << info.name;
    } else if ((info.verdicts & (kSource | kBinary | kFilter | kExtension)) != 0) {
      EXPECT_EQ(info.step, VersionStep::kMajor) << info.name;
    } else if (info.verdicts != kSafe || info.name.ends_with("-added")) {
      EXPECT_EQ(info.step, VersionStep::kMinor) << info.name;
    }
  }
}

TEST(VerdictNames, Bits_AreNamedInTheirOrder) {
  EXPECT_TRUE(verdict_names(kSafe).empty());
  EXPECT_EQ(verdict_names(kExtension | kSource | kRender),
            (std::vector<std::string_view>{"source", "render", "extension"}));
  EXPECT_EQ(verdict_names(kBinary | kTranslation | kFilter),
            (std::vector<std::string_view>{"binary", "translation", "filter"}));
}

}  // namespace
