#include "tools/report/finding.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

TEST(Findings, TakeSorted_OrdersByPositionAndKeepsTiesInOrder) {
  Findings diagnostics("f");
  diagnostics.error({2, 1}, Rule::kBadNumber, "third");
  diagnostics.warning({1, 5}, Rule::kPathConflict, "first");
  diagnostics.error({1, 5}, Rule::kBadVersion, "second");
  EXPECT_TRUE(diagnostics.has_errors());
  const std::vector<Finding> sorted = diagnostics.take_sorted();
  ASSERT_EQ(sorted.size(), 3U);
  EXPECT_EQ(sorted[0].text, "first");
  EXPECT_EQ(sorted[1].text, "second");
  EXPECT_EQ(sorted[2].text, "third");
  EXPECT_FALSE(diagnostics.has_errors());
}

TEST(Findings, WarningsAlone_AreNoErrors) {
  Findings diagnostics("f");
  diagnostics.warning({1, 1}, Rule::kPathConflict, "w");
  EXPECT_FALSE(diagnostics.has_errors());
  EXPECT_FALSE(has_errors(diagnostics.take_sorted()));
}

TEST(Findings, RemovedWarnings_AreThoseThatAreUnwanted) {
  Findings diagnostics("f");
  diagnostics.warning({1, 1}, Rule::kLongMessage, "unwanted");
  diagnostics.warning({2, 1}, Rule::kPathConflict, "wanted");
  diagnostics.error({3, 1}, Rule::kLongMessage, "an error stays");
  diagnostics.remove_warnings([](const Finding& warning) { return warning.rule == Rule::kLongMessage; });
  EXPECT_TRUE(diagnostics.has_errors());
  const std::vector<Finding> left = diagnostics.take_sorted();
  ASSERT_EQ(left.size(), 2U);
  EXPECT_EQ(left[0].text, "wanted");
  EXPECT_EQ(left[1].text, "an error stays");
}

TEST(Finding, NoteWithoutAPlace_IsLeftOut) {
  Findings diagnostics("f");
  diagnostics.error({1, 1}, Rule::kBadNumber, "text")
      .with_note({}, "nowhere")
      .with_note({7, 8}, "here")
      .with_hint("do");
  const std::vector<Finding> found = diagnostics.take_sorted();
  ASSERT_EQ(found.at(0).notes.size(), 1U);
  EXPECT_EQ(found[0].notes[0].file, "f");
  EXPECT_EQ(found[0].notes[0].place, TextPlace(7, 8));
  EXPECT_EQ(found[0].notes[0].text, "here");
  EXPECT_EQ(found[0].hint, "do");
}

TEST(Findings, SeveralFiles_StayInTheOrderOfTheirFirstFinding) {
  Findings findings;
  findings.error("b.po", 7, Rule::kYamlSyntax, "1");
  findings.warning("a.po", 9, Rule::kYamlSyntax, "2");
  findings.error("b.po", 3, Rule::kYamlSyntax, "3");
  findings.error("b.po", 7, Rule::kYamlSyntax, "4");
  findings.error("b.po", {7, 2}, Rule::kYamlSyntax, "5");
  EXPECT_EQ(findings.error_count(), 4U);
  std::string order;
  for (const Finding& finding : findings.take_sorted()) order += finding.text;
  EXPECT_EQ(order, "31452");
}

}  // namespace
}  // namespace qzlog_compiler
