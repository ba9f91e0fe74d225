#ifndef QZLOG_TESTS_TOOLS_GOLDEN_RUN_H
#define QZLOG_TESTS_TOOLS_GOLDEN_RUN_H

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace golden {

/// Runs the case of a file in a folder of its own and expects the file's result. With QZLOG_REWRITE_GOLDEN=1 in the
/// environment what the command gives now is written into the file; look at the difference before keeping it.
void expect_golden_result(const std::filesystem::path& path);

/// Names the tests of an INSTANTIATE_TEST_SUITE_P after their files.
std::string row_name(const ::testing::TestParamInfo<std::filesystem::path>& row);

/// The results of all cases of a folder.
std::string results_in(const std::filesystem::path& folder);

/// Whether a diagnostic of the rule stands in results.
bool is_shown(std::string_view rule, std::string_view results);

}  // namespace golden

#endif  // QZLOG_TESTS_TOOLS_GOLDEN_RUN_H
