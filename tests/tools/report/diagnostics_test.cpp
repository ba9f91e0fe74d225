#include "tools/report/diagnostics.h"

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

TEST(Diagnostics, RemovedWarnings_AreThoseThatAreUnwanted) {
  Diagnostics diagnostics("f");
  diagnostics.warning({1, 1}, Rule::kLongMessage, "unwanted");
  diagnostics.warning({2, 1}, Rule::kPathConflict, "wanted");
  diagnostics.error({3, 1}, Rule::kLongMessage, "an error stays");
  diagnostics.remove_warnings([](const Diagnostic& warning) { return warning.rule == Rule::kLongMessage; });
  EXPECT_TRUE(diagnostics.has_errors());
  const std::vector<Diagnostic> left = diagnostics.take_sorted();
  ASSERT_EQ(left.size(), 2U);
  EXPECT_EQ(left[0].text, "wanted");
  EXPECT_EQ(left[1].text, "an error stays");
}

TEST(Diagnostic, NoteWithoutAPlace_IsLeftOut) {
  Diagnostics diagnostics("f");
  diagnostics.error({1, 1}, Rule::kBadNumber, "text")
      .with_note({}, "nowhere")
      .with_note({7, 8}, "here")
      .with_hint("do");
  const std::vector<Diagnostic> found = diagnostics.take_sorted();
  ASSERT_EQ(found.at(0).notes.size(), 1U);
  EXPECT_EQ(found[0].notes[0].file, "f");
  EXPECT_EQ(found[0].notes[0].position, (SourcePosition{7, 8}));
  EXPECT_EQ(found[0].notes[0].text, "here");
  EXPECT_EQ(found[0].hint, "do");
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
