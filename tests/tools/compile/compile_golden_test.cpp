#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/tools/golden_case.h"
#include "tests/tools/golden_run.h"
#include "tools/report/source_rules.h"

namespace {

namespace fs = std::filesystem;

const fs::path kCases = QZLOG_GOLDEN "/compile";

class Golden : public ::testing::TestWithParam<fs::path> {};

TEST_P(Golden, Command_GivesTheResultOfTheCase) { golden::expect_golden_result(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Compile, Golden, ::testing::ValuesIn(golden::cases_in(kCases)), golden::row_name);

TEST(GoldenCases, EveryRule_HasOne) {
  const std::string results = golden::results_in(kCases);
  for (const qzlog_compiler::RuleInfo& rule : qzlog_compiler::all_rules()) {
    EXPECT_TRUE(golden::is_shown(rule.name, results)) << "no golden case for " << rule.name;
  }
}

}  // namespace
