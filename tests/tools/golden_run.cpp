#include "tests/tools/golden_run.h"

#include <cstdlib>

#include "tests/tools/golden_case.h"
#include "tests/tools/temporary_folder.h"

namespace golden {

void expect_golden_result(const std::filesystem::path& path) {
  const Case golden_case = read_case(path);
  const qzlog_test::TemporaryFolder folder;
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
