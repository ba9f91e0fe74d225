#include "tools/catalog/catalog_findings.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/tools/catalog/source_messages.h"

namespace qzlog_catalog {
namespace {

TEST(CatalogFindings, Printed_WithTheLineWhereThereIsOne) {
  CatalogFindings findings;
  findings.error("b.po", 7, CatalogRule::kPoSyntax, "broken");
  findings.warning("b.po", 0, CatalogRule::kUnknownMessage, "unknown");
  EXPECT_EQ(printed(findings), "b.po:7: error: broken [po-syntax]\nb.po: warning: unknown [unknown-message]\n");
  EXPECT_EQ(findings.error_count(), 1u);
}

TEST(CatalogFindings, SortedByLine_FilesStayInTheOrderOfTheirFirstFinding) {
  CatalogFindings findings;
  findings.error("b.po", 7, CatalogRule::kPoSyntax, "1");
  findings.error("a.po", 9, CatalogRule::kPoSyntax, "2");
  findings.error("b.po", 3, CatalogRule::kPoSyntax, "3");
  findings.error("b.po", 7, CatalogRule::kPoSyntax, "4");
  findings.sort_by_line();
  std::string order;
  for (const CatalogFinding& finding : findings.all()) order += finding.text;
  EXPECT_EQ(order, "3142");
}

TEST(CatalogRules, Names_AreUniqueAndHaveAMeaning) {
  std::set<std::string_view> names;
  for (const CatalogRuleInfo& rule : all_catalog_rules()) {
    EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
    EXPECT_TRUE(rule.meaning.ends_with('.')) << rule.name;
  }
}

}  // namespace
}  // namespace qzlog_catalog
