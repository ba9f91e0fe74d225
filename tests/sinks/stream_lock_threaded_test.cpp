#include "sinks/stream_lock.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "sinks/sink_clock.h"
#include "tests/support/child_process.h"
#include "tests/support/rounds.h"

namespace {

using namespace qz_test;
using qzlog::SinkClock;
using qzlog::StreamHold;
using qzlog::StreamLock;

TEST(StreamLockThreaded, ManyThreads_OneHoldsItAtATime) {
  constexpr int kThreads = 4;
  const int rounds_each = rounds(20000);
  StreamLock lock;
  long long count = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < rounds_each; ++round) {
        const StreamHold hold(lock, SinkClock::steady_milliseconds() + 60000);
        if (hold) ++count;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, static_cast<long long>(kThreads) * rounds_each);
}

TEST(StreamLockThreaded, HeldByAnother_WaitsToItsDeadline) {
  StreamLock lock;
  ASSERT_TRUE(lock.lock(0));
  std::thread([&] {
    const long long begin = SinkClock::steady_milliseconds();
    const StreamHold hold(lock, begin + 30);
    EXPECT_FALSE(hold);
    EXPECT_GE(SinkClock::steady_milliseconds() - begin, 30);
  }).join();
  lock.unlock();
  EXPECT_TRUE(lock.lock(0));
}

TEST(StreamLockThreaded, HeldWhenTheProcessForks_IsFreeInTheChild) {
  StreamLock lock;
  ASSERT_TRUE(lock.lock(0));
  expect_child_succeeds([&] { return lock.lock(0) && !lock.lock(0) ? 0 : 1; });
  EXPECT_FALSE(lock.lock(0));
}

}  // namespace
