#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/tools/compiler/golden_case.h"
#include "tests/tools/temporary_folder.h"
#include "tools/catalog/catalog_findings.h"

namespace {

namespace fs = std::filesystem;

class CatalogGolden : public ::testing::TestWithParam<fs::path> {};

/// QZLOG_REWRITE_GOLDEN=1 writes what the command gives now into the cases; look at the difference before keeping it.
TEST_P(CatalogGolden, Command_GivesTheResultOfTheCase) {
  const golden::Case golden_case = golden::read_case(GetParam());
  const qzlog_test::TemporaryFolder folder;
  const std::string result = golden::run_case(golden_case, folder.path());
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) golden::rewrite_case(GetParam(), golden_case, result);
  EXPECT_EQ(result, golden::read_case(GetParam()).result);
}

INSTANTIATE_TEST_SUITE_P(Catalog, CatalogGolden, ::testing::ValuesIn(golden::cases_in(QZLOG_CATALOG_GOLDEN)),
                         [](const auto& row) { return golden::test_name(row.param); });

TEST(CatalogGoldenCases, EveryRule_HasOne) {
  std::string results;
  for (const fs::path& path : golden::cases_in(QZLOG_CATALOG_GOLDEN)) results += golden::read_case(path).result;
  for (const qzlog_catalog::CatalogRuleInfo& rule : qzlog_catalog::all_catalog_rules()) {
    const bool shown = results.find("[" + std::string(rule.name) + "]\n") != std::string::npos;
    EXPECT_TRUE(shown) << "no golden case for " << rule.name;
  }
}

}  // namespace
