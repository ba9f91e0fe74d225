#ifndef QZLOG_TESTS_MESSAGE_FRESH_PROCESS_H
#define QZLOG_TESTS_MESSAGE_FRESH_PROCESS_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace qz_test {

/// For the process's exit status: 0 when no assertion of the current test has failed so far, after printing those that
/// have (a child process of GoogleTest does not print them by itself).
inline int report_failures_so_far() {
  const testing::TestResult& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
  for (int i = 0; i < result.total_part_count(); ++i) {
    const testing::TestPartResult& part = result.GetTestPartResult(i);
    if (part.failed()) std::fprintf(stderr, "%s:%d\n%s\n", part.file_name(), part.line_number(), part.message());
  }
  return result.Failed() ? 1 : 0;
}

/// Runs `body` in a process of its own, in which nothing of the library has been used yet: what is made once in a
/// process is made there. Its failed assertions fail the test. `body` makes and destroys everything that it needs.
inline void expect_in_fresh_process(const std::function<void()>& body) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        body();
        std::exit(report_failures_so_far());
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_MESSAGE_FRESH_PROCESS_H
