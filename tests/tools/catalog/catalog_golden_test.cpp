#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/tools/compiler/golden_case.h"
#include "tests/tools/temporary_folder.h"
#include "tools/catalog/catalog_findings.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> all_cases() {
  std::vector<fs::path> paths;
  for (const fs::directory_entry& entry : fs::directory_iterator(QZLOG_CATALOG_GOLDEN)) {
    if (entry.path().extension() == ".case") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::string test_name(const ::testing::TestParamInfo<fs::path>& info) {
  std::string name = info.param.stem().string();
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

class CatalogGolden : public ::testing::TestWithParam<fs::path> {};

/// QZLOG_REWRITE_GOLDEN=1 writes what the command gives now into the cases; look at the difference before keeping it.
TEST_P(CatalogGolden, Command_GivesTheResultOfTheCase) {
  const golden::Case golden_case = golden::read_case(GetParam());
  const qzlog_test::TemporaryFolder folder;
  const std::string result = golden::run_case(golden_case, folder.path());
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) golden::rewrite_case(GetParam(), golden_case, result);
  EXPECT_EQ(result, golden::read_case(GetParam()).result);
}

INSTANTIATE_TEST_SUITE_P(Catalog, CatalogGolden, ::testing::ValuesIn(all_cases()), test_name);

TEST(CatalogGoldenCases, EveryRule_HasOne) {
  std::string results;
  for (const fs::path& path : all_cases()) results += golden::read_case(path).result;
  for (const qzlog_catalog::CatalogRuleInfo& rule : qzlog_catalog::all_catalog_rules()) {
    const bool shown = results.find("[" + std::string(rule.name) + "]\n") != std::string::npos;
    EXPECT_TRUE(shown) << "no golden case for " << rule.name;
  }
}

}  // namespace
