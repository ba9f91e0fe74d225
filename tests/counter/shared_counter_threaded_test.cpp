#include <gtest/gtest.h>

#include <latch>
#include <memory>
#include <thread>
#include <vector>

#include "counter/record_format.h"
#include "qzlog/shared_counter.h"
#include "tests/support/rounds.h"
#include "tests/support/temp_dir.h"

namespace qz_test {
namespace {

unsigned sum_of(const std::string& bytes) {
  unsigned sum = 0;
  for (std::size_t at = 0; at + 32 <= bytes.size(); at += 32) {
    sum += static_cast<unsigned>(qzlog::decode_record(reinterpret_cast<const unsigned char*>(bytes.data()) + at).count);
  }
  return sum;
}

/// Each thread counts with the counter that `counter_of` gives it.
template <class CounterOf>
void count_in_threads(int threads, int times, CounterOf&& counter_of) {
  std::latch start(threads);
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&, thread] {
      qz_LOG_SharedCounter& counter = counter_of(thread);
      start.arrive_and_wait();
      for (int i = 0; i < times; ++i) counter.Increase(2026, 11, 1 + i % 3, i % 5);
    });
  }
  for (std::thread& thread : running) thread.join();
}

constexpr int kThreads = 4;

TEST(SharedCounterThreads, OneCounterForAll_LosesNoCount) {
  const TempDir folder;
  const int times = rounds(20000);
  qz_LOG_SharedCounter counter(folder.path().c_str(), "days");
  count_in_threads(kThreads, times, [&](int) -> qz_LOG_SharedCounter& { return counter; });
  EXPECT_EQ(sum_of(folder.read("days.cnt")), static_cast<unsigned>(kThreads * times));
  EXPECT_EQ(folder.read("days.cnt").size(), 15 * 32U);
}

TEST(SharedCounterThreads, CounterForEach_LosesNoCount) {
  const TempDir folder;
  const int times = rounds(5000);
  std::vector<std::unique_ptr<qz_LOG_SharedCounter>> counters;
  for (int i = 0; i < kThreads; ++i) {
    counters.push_back(std::make_unique<qz_LOG_SharedCounter>(folder.path().c_str(), "days"));
  }
  count_in_threads(kThreads, times,
                   [&](int thread) -> qz_LOG_SharedCounter& { return *counters[static_cast<std::size_t>(thread)]; });
  EXPECT_EQ(sum_of(folder.read("days.cnt")), static_cast<unsigned>(kThreads * times));
  EXPECT_EQ(folder.read("days.cnt").size(), 15 * 32U);
}

}  // namespace
}  // namespace qz_test
