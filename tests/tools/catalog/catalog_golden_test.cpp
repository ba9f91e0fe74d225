#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/tools/golden_case.h"
#include "tests/tools/golden_run.h"
#include "tools/catalog/catalog_rules.h"

namespace {

namespace fs = std::filesystem;

class CatalogGolden : public ::testing::TestWithParam<fs::path> {};

TEST_P(CatalogGolden, Command_GivesTheResultOfTheCase) { golden::expect_golden_result(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Catalog, CatalogGolden, ::testing::ValuesIn(golden::cases_in(QZLOG_GOLDEN "/catalog")),
                         golden::row_name);

TEST(CatalogGoldenCases, EveryRule_HasOne) {
  const std::string results = golden::results_in(QZLOG_GOLDEN "/catalog");
  for (const qzlog_compiler::RuleInfo& rule : qzlog_catalog::all_catalog_rules()) {
    EXPECT_TRUE(golden::is_shown(rule.name, results)) << "no golden case for " << rule.name;
  }
}

}  // namespace
