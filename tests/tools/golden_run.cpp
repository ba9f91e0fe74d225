#include "tests/tools/golden_run.h"

#include <cstdlib>

#include "tests/support/temp_dir.h"
#include "tests/tools/golden_case.h"

namespace golden {

void expect_golden_result(const std::filesystem::path& path) {
  const Case golden_case = read_case(path);
  const qz_test::TempDir folder;
  const std::string result = run_case(golden_case, folder.path());
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) rewrite_case(path, golden_case, result);
  EXPECT_EQ(result, read_case(path).result);
}

std::string row_name(const ::testing::TestParamInfo<std::filesystem::path>& row) { return test_name(row.param); }

std::string results_in(const std::filesystem::path& folder) {
  std::string results;
  for (const std::filesystem::path& path : cases_in(folder)) results += read_case(path).result;
  return results;
}

bool is_shown(std::string_view rule, std::string_view results) {
  return results.find("[" + std::string(rule) + "]\n") != std::string_view::npos;
}

}  // namespace golden
