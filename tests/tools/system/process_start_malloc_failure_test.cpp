#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <ctime>

#include "tests/support/malloc_failure.h"
#include "tools/system/command_error.h"
#include "tools/system/process_start.h"

namespace {

using qz_test::MallocFailure;

constexpr int kRight = 10;
constexpr int kWrong = 11;
constexpr int kNothingFailed = 12;

/// A process whose n-th allocation fails while it reads a zone that is an hour east of Greenwich.
[[noreturn]] void read_time_zone_without_memory(unsigned nth) {
  ::setenv("TZ", "XYZ-1", 1);
  bool happened = false;
  {
    const MallocFailure failure(nth);
    qzlog_tool::read_time_zone();
    happened = MallocFailure::happened();
  }
  const std::time_t now = 0;
  std::tm local = {};
  ::localtime_r(&now, &local);
  ::_exit(local.tm_hour != 1 ? kWrong : happened ? kRight : kNothingFailed);
}

int status_without_memory(unsigned nth) {
  int status = -1;
  const auto keep = [&](int ended) {
    status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
    return true;
  };
  EXPECT_EXIT(read_time_zone_without_memory(nth), keep, "") << nth;
  return status;
}

TEST(ReadTimeZone, AnyAllocationFails_RightZoneOrTheEnd) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizer has an allocator of its own";
#endif
  unsigned ended = 0;
  int status = kRight;
  for (unsigned nth = 1; status != kNothingFailed && nth < 100; ++nth) {
    status = status_without_memory(nth);
    ended += status == qzlog_tool::kExitCannotRun ? 1U : 0U;
    EXPECT_TRUE(status == kRight || status == kNothingFailed || status == qzlog_tool::kExitCannotRun)
        << nth << ": " << status;
  }
  EXPECT_EQ(status, kNothingFailed);
  EXPECT_GT(ended, 0U);
}

}  // namespace
