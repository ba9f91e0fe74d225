#include "foundation/locks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <latch>
#include <optional>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

using namespace qzlog;

namespace {

constexpr int kThreads = 6;
constexpr int kRounds = 2000;

template <typename Function>
void run_together(int count, Function function) {
  std::latch start(count);
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      function(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(RWLock, Types_CannotBeCopied) {
  static_assert(std::is_constructible_v<qz_LOG_CRWLock, void*>);
  static_assert(!std::is_copy_constructible_v<qz_LOG_CRWLock>);
  static_assert(!std::is_copy_constructible_v<qz_LOG_CReaderSentry>);
  static_assert(!std::is_copy_constructible_v<qz_LOG_CWriterSentry>);
  static_assert(!std::is_copy_constructible_v<qz_THREAD_global_lock>);
  SUCCEED();
}

// Every reader waits inside for all the others: this ends only when they hold the lock at once.
TEST(RWLock, ManyReaders_HoldItAtTheSameTime) {
  qz_LOG_CRWLock lock(nullptr);
  std::barrier all_inside(kThreads);
  std::atomic<int> inside = 0;
  run_together(kThreads, [&](int) {
    const qz_LOG_CReaderSentry reader(lock);
    ++inside;
    all_inside.arrive_and_wait();
  });
  EXPECT_EQ(inside, kThreads);
}

TEST(RWLock, Writers_ExcludeEachOtherAndReaders) {
  qz_LOG_CRWLock lock(nullptr);
  long long first = 0;
  long long second = 0;
  std::atomic<int> torn = 0;
  run_together(kThreads, [&](int thread) {
    for (int i = 0; i < kRounds; ++i) {
      if (thread % 2 == 0) {
        const qz_LOG_CWriterSentry writer(lock);
        ++first;
        ++second;
      } else {
        const qz_LOG_CReaderSentry reader(lock);
        if (first != second) ++torn;
      }
    }
  });
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(first, static_cast<long long>(kThreads / 2) * kRounds);
  EXPECT_EQ(first, second);
}

template <typename Holder, typename Waiter>
void expect_waiter_enters_after_release() {
  qz_LOG_CRWLock lock(nullptr);
  std::optional<Holder> holder(std::in_place, lock);
  std::atomic<bool> released = false;
  std::atomic<bool> entered = false;
  bool was_released = false;
  std::latch trying(2);
  std::thread waiter([&] {
    trying.arrive_and_wait();
    const Waiter sentry(lock);
    was_released = released;
    entered = true;
  });
  trying.arrive_and_wait();
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  EXPECT_FALSE(entered);
  released = true;
  holder.reset();
  waiter.join();
  EXPECT_TRUE(entered);
  EXPECT_TRUE(was_released);
}

TEST(RWLock, WriterWhileReaderHolds_Waits) {
  expect_waiter_enters_after_release<qz_LOG_CReaderSentry, qz_LOG_CWriterSentry>();
}

TEST(RWLock, ReaderWhileWriterHolds_Waits) {
  expect_waiter_enters_after_release<qz_LOG_CWriterSentry, qz_LOG_CReaderSentry>();
}

TEST(RWLock, WriterWhileWriterHolds_Waits) {
  expect_waiter_enters_after_release<qz_LOG_CWriterSentry, qz_LOG_CWriterSentry>();
}

TEST(RWLock, WriterAttempt_HoldsOnlyWhatIsFree) {
  qz_LOG_CRWLock lock(nullptr);
  const auto attempt = [&] {
    bool held = false;
    std::thread([&] { held = static_cast<bool>(WriterAttempt(lock)); }).join();
    return held;
  };
  EXPECT_TRUE(attempt());
  {
    const qz_LOG_CReaderSentry reader(lock);
    EXPECT_FALSE(attempt());
  }
  {
    const WriterAttempt writer(lock);
    EXPECT_TRUE(writer);
    EXPECT_FALSE(attempt());
  }
  EXPECT_TRUE(attempt());
}

TEST(RWLock, ExceptionWhileHeld_Releases) {
  qz_LOG_CRWLock lock(nullptr);
  int entered = 0;
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(
        {
          const qz_LOG_CWriterSentry writer(lock);
          ++entered;
          throw std::runtime_error("held");
        },
        std::runtime_error);
    EXPECT_THROW(
        {
          const qz_LOG_CReaderSentry reader(lock);
          ++entered;
          throw std::runtime_error("held");
        },
        std::runtime_error);
  }
  EXPECT_EQ(entered, 6);
}

TEST(RWLock, TwoLocks_AreIndependent) {
  qz_LOG_CRWLock first(nullptr);
  qz_LOG_CRWLock second(nullptr);
  const qz_LOG_CWriterSentry holds_first(first);
  bool entered = false;
  std::thread([&] {
    const qz_LOG_CWriterSentry holds_second(second);
    entered = true;
  }).join();
  EXPECT_TRUE(entered);
}

TEST(GlobalLock, ManyThreads_OneAtATime) {
  long long counter = 0;
  run_together(kThreads, [&](int) {
    for (int i = 0; i < kRounds; ++i) {
      const qz_THREAD_global_lock lock;
      ++counter;
    }
  });
  EXPECT_EQ(counter, static_cast<long long>(kThreads) * kRounds);
}

TEST(GlobalLock, ExceptionWhileHeld_Releases) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(
        {
          const qz_THREAD_global_lock lock;
          throw std::runtime_error("held");
        },
        std::runtime_error);
  }
}

}  // namespace
