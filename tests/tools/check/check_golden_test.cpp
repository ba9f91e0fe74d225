#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "tests/tools/compiler/golden_case.h"
#include "tests/tools/temporary_folder.h"
#include "tools/check_finding.h"

namespace {

namespace fs = std::filesystem;

class CheckGolden : public ::testing::TestWithParam<fs::path> {};

/// QZLOG_REWRITE_GOLDEN=1 writes what the command gives now into the cases; look at the difference before keeping it.
TEST_P(CheckGolden, Command_GivesTheResultOfTheCase) {
  const golden::Case golden_case = golden::read_case(GetParam());
  const qzlog_test::TemporaryFolder folder;
  const std::string result = golden::run_case(golden_case, folder.path());
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) golden::rewrite_case(GetParam(), golden_case, result);
  EXPECT_EQ(result, golden::read_case(GetParam()).result);
}

INSTANTIATE_TEST_SUITE_P(Check, CheckGolden, ::testing::ValuesIn(golden::cases_in(QZLOG_CHECK_GOLDEN)),
                         [](const auto& row) { return golden::test_name(row.param); });
INSTANTIATE_TEST_SUITE_P(Explain, CheckGolden, ::testing::ValuesIn(golden::cases_in(QZLOG_EXPLAIN_GOLDEN)),
                         [](const auto& row) { return golden::test_name(row.param); });

class CheckRules : public ::testing::Test {
 protected:
  CheckRules() {
    for (const fs::path& path : golden::cases_in(QZLOG_CHECK_GOLDEN)) results_ += golden::read_case(path).result;
  }
  bool is_shown(std::string_view rule) const {
    return results_.find("[" + std::string(rule) + "]\n") != std::string::npos;
  }

  std::string results_;
};

TEST_F(CheckRules, EachOfItsOwn_HasACase) {
  for (const qzlog_tool::CheckRuleInfo& rule : qzlog_tool::all_check_rules()) {
    EXPECT_TRUE(is_shown(rule.name)) << "no golden case for " << rule.name;
  }
}

TEST_F(CheckRules, EachSharedWithTheCompiler_HasACase) {
  for (const qzlog_compiler::Rule rule : qzlog_tool::shared_check_rules()) {
    EXPECT_TRUE(is_shown(rule_name(rule))) << "no golden case for " << rule_name(rule);
  }
}

TEST(CheckRuleTable, Names_StandAtTheirRules) {
  std::size_t index = 0;
  for (const qzlog_tool::CheckRuleInfo& rule : qzlog_tool::all_check_rules()) {
    EXPECT_EQ(static_cast<std::size_t>(rule.rule), index++);
    EXPECT_EQ(qzlog_tool::check_rule_name(rule.rule), rule.name);
  }
}

}  // namespace
