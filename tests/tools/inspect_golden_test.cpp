#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/tools/compiler/golden_case.h"
#include "tests/tools/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

const fs::path kCases = QZLOG_INSPECT_GOLDEN;

class InspectGolden : public ::testing::TestWithParam<fs::path> {};

/// QZLOG_REWRITE_GOLDEN=1 writes what the command gives now into the cases; look at the difference before keeping it.
TEST_P(InspectGolden, Command_GivesTheResultOfTheCase) {
  const golden::Case golden_case = golden::read_case(GetParam());
  const qzlog_test::TemporaryFolder folder;
  const std::string result = golden::run_case(golden_case, folder.path());
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) golden::rewrite_case(GetParam(), golden_case, result);
  EXPECT_EQ(result, golden::read_case(GetParam()).result);
}

INSTANTIATE_TEST_SUITE_P(Inspect, InspectGolden, ::testing::ValuesIn(golden::cases_in(kCases)),
                         [](const auto& row) { return golden::test_name(row.param); });

}  // namespace
