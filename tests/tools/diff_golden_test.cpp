#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/tools/compiler/golden_case.h"
#include "tests/tools/temporary_folder.h"
#include "tools/compiler/diff_rules.h"

namespace {

namespace fs = std::filesystem;

const fs::path kCases = QZLOG_DIFF_GOLDEN;

class DiffGolden : public ::testing::TestWithParam<fs::path> {};

/// QZLOG_REWRITE_GOLDEN=1 writes what the command gives now into the cases; look at the difference before keeping it.
TEST_P(DiffGolden, Command_GivesTheResultOfTheCase) {
  const golden::Case golden_case = golden::read_case(GetParam());
  const qzlog_test::TemporaryFolder folder;
  const std::string result = golden::run_case(golden_case, folder.path());
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) golden::rewrite_case(GetParam(), golden_case, result);
  EXPECT_EQ(result, golden::read_case(GetParam()).result);
}

INSTANTIATE_TEST_SUITE_P(Diff, DiffGolden, ::testing::ValuesIn(golden::cases_in(kCases)),
                         [](const auto& row) { return golden::test_name(row.param); });

TEST(DiffGoldenCases, EveryRule_HasOneOfItsName) {
  for (const qzlog_compiler::DiffRuleInfo& rule : qzlog_compiler::all_diff_rules()) {
    const fs::path path = kCases / (std::string(rule.name) + ".case");
    ASSERT_TRUE(fs::exists(path)) << path;
    const std::string result = golden::read_case(path).result;
    EXPECT_NE(result.find("[" + std::string(rule.name) + "]\n"), std::string::npos) << path;
  }
}

}  // namespace
