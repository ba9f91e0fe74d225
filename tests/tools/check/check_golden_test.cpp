#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/tools/golden_case.h"
#include "tests/tools/golden_run.h"
#include "tools/report/check_rules.h"

namespace {

namespace fs = std::filesystem;

class CheckGolden : public ::testing::TestWithParam<fs::path> {};

TEST_P(CheckGolden, Command_GivesTheResultOfTheCase) { golden::expect_golden_result(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Check, CheckGolden, ::testing::ValuesIn(golden::cases_in(QZLOG_GOLDEN "/check")),
                         golden::row_name);
INSTANTIATE_TEST_SUITE_P(Explain, CheckGolden, ::testing::ValuesIn(golden::cases_in(QZLOG_GOLDEN "/explain")),
                         golden::row_name);

class CheckRules : public ::testing::Test {
 protected:
  const std::string results_ = golden::results_in(QZLOG_GOLDEN "/check");
};

TEST_F(CheckRules, EachOfItsOwn_HasACase) {
  for (const qzlog_compiler::RuleInfo& rule : qzlog_tool::all_check_rules()) {
    EXPECT_TRUE(golden::is_shown(rule.name, results_)) << "no golden case for " << rule.name;
  }
}

TEST_F(CheckRules, EachSharedWithTheCompiler_HasACase) {
  for (const qzlog_compiler::Rule rule : qzlog_tool::shared_check_rules()) {
    EXPECT_TRUE(golden::is_shown(rule_name(rule), results_)) << "no golden case for " << rule_name(rule);
  }
}

}  // namespace
