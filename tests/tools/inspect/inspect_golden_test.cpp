#include <gtest/gtest.h>

#include <filesystem>

#include "tests/tools/golden_case.h"
#include "tests/tools/golden_run.h"

namespace {

namespace fs = std::filesystem;

const fs::path kCases = QZLOG_GOLDEN "/inspect";

class InspectGolden : public ::testing::TestWithParam<fs::path> {};

TEST_P(InspectGolden, Command_GivesTheResultOfTheCase) { golden::expect_golden_result(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Inspect, InspectGolden, ::testing::ValuesIn(golden::cases_in(kCases)), golden::row_name);

}  // namespace
