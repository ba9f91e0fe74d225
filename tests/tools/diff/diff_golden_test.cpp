#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/tools/golden_case.h"
#include "tests/tools/golden_run.h"
#include "tools/diff/diff_rules.h"

namespace {

namespace fs = std::filesystem;

const fs::path kCases = QZLOG_GOLDEN "/diff";

class DiffGolden : public ::testing::TestWithParam<fs::path> {};

TEST_P(DiffGolden, Command_GivesTheResultOfTheCase) { golden::expect_golden_result(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Diff, DiffGolden, ::testing::ValuesIn(golden::cases_in(kCases)), golden::row_name);

TEST(DiffGoldenCases, EveryRule_HasOneOfItsName) {
  for (const qzlog_compiler::DiffRuleInfo& rule : qzlog_compiler::all_diff_rules()) {
    const fs::path path = kCases / (std::string(rule.name) + ".case");
    ASSERT_TRUE(fs::exists(path)) << path;
    EXPECT_TRUE(golden::is_shown(rule.name, golden::read_case(path).result)) << path;
  }
}

}  // namespace
