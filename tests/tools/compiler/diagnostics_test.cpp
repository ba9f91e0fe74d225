#include "tools/compiler/diagnostics.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace qzlog_compiler {
namespace {

std::string printed(const Diagnostic& diagnostic) {
  std::ostringstream out;
  out << diagnostic;
  return out.str();
}

TEST(Diagnostic, ErrorWithPosition_PrintsLikeACompiler) {
  EXPECT_EQ(printed({"storage.yaml", {12, 9}, Severity::kError, Rule::kUnknownType, "unknown type 'Char33'"}),
            "storage.yaml:12:9: error: unknown type 'Char33' [unknown-type]");
}

TEST(Diagnostic, WarningWithoutPosition_PrintsNoPlace) {
  EXPECT_EQ(printed({"a.ldf", {}, Severity::kWarning, Rule::kBadDefinitionFile, "odd"}),
            "a.ldf: warning: odd [bad-definition-file]");
}

TEST(Diagnostics, TakeSorted_OrdersByPositionAndKeepsTiesInOrder) {
  Diagnostics diagnostics("f");
  diagnostics.error({2, 1}, Rule::kBadNumber, "third");
  diagnostics.warning({1, 5}, Rule::kPathConflict, "first");
  diagnostics.error({1, 5}, Rule::kBadVersion, "second");
  EXPECT_TRUE(diagnostics.has_errors());
  const std::vector<Diagnostic> sorted = diagnostics.take_sorted();
  ASSERT_EQ(sorted.size(), 3U);
  EXPECT_EQ(sorted[0].text, "first");
  EXPECT_EQ(sorted[1].text, "second");
  EXPECT_EQ(sorted[2].text, "third");
  EXPECT_FALSE(diagnostics.has_errors());
}

TEST(Diagnostics, WarningsAlone_AreNoErrors) {
  Diagnostics diagnostics("f");
  diagnostics.warning({1, 1}, Rule::kPathConflict, "w");
  EXPECT_FALSE(diagnostics.has_errors());
  EXPECT_FALSE(has_errors(diagnostics.take_sorted()));
}

TEST(AllRules, Names_AreUniqueLowerCaseWords) {
  std::set<std::string_view> names;
  for (const RuleInfo& rule : all_rules()) {
    EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
    EXPECT_EQ(rule.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"), std::string_view::npos)
        << rule.name;
    EXPECT_EQ(rule.name, rule_name(rule.rule));
    EXPECT_FALSE(rule.meaning.empty());
  }
}

}  // namespace
}  // namespace qzlog_compiler
