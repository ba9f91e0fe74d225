#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "qzlog/qz_time.h"
#include "tests/support/support.h"

namespace {

TEST(QzTimeThreads, ConstMembersOfOneValue_MayBeCalledTogether) {
  constexpr int kThreads = 6;
  const qz_test::TimeZone zone("Australia/Lord_Howe");
  qz_Time shared = qz_Time::from_unix_seconds(1795248930);
  shared.GMT_to_local();
  std::latch start(kThreads);
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int i = 0; i < 500; ++i) {
        char buffer[64];
        shared.print_out(buffer, sizeof(buffer));
        qz_Time own;
        if (!own.set_to_string_value(buffer) || own.compare_time(shared) != 0) ++wrong;
        if (std::string(buffer) != "2026-11-21 19:15:30" || shared.unix_seconds() != 1795248930) ++wrong;
        if (!shared.is_daylight_saving() || 60 - shared.get_timezone_offset() != 660) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
