#include "foundation/fork_gate.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

#include "foundation/locks.h"
#include "tests/support/child_process.h"

using namespace qzlog;

namespace {

using qz_test::ChildProcess;
using qz_test::expect_child_succeeds;

constexpr unsigned kMoreThreadsThanGates = 100;

int succeed() { return 0; }

/// Every gate can be passed, by threads too.
int pass() {
  const ForkDelay delay;
  const ForkDelay nested;
  return 0;
}

int pass_in_threads() {
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kMoreThreadsThanGates; ++i) threads.emplace_back(pass);
  for (std::thread& thread : threads) thread.join();
  return pass();
}

/// A thread that stays inside until it is told to leave, or to the end.
class ThreadInside {
 public:
  ThreadInside() {
    thread_ = std::thread([this] {
      const ForkDelay delay;
      inside_.count_down();
      while (!leaving_) std::this_thread::yield();
      left_ = true;
    });
    inside_.wait();
  }
  ~ThreadInside() {
    leave();
    thread_.join();
  }
  void leave() { leaving_ = true; }
  bool has_left() const { return left_; }

 private:
  std::latch inside_{1};
  std::atomic<bool> leaving_{false};
  std::atomic<bool> left_{false};
  std::thread thread_;
};

TEST(ForkGate, NobodyInside_ForkAndEveryGateOpenAfterwards) {
  expect_child_succeeds(pass);
  expect_child_succeeds([] { return ChildProcess(pass).wait(); });
  EXPECT_EQ(pass_in_threads(), 0);
}

/// Lets other threads run, but for less than a fork waits, however busy the machine is.
void yield_often() {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
  for (int i = 0; i < 1000 && std::chrono::steady_clock::now() < end; ++i) std::this_thread::yield();
}

TEST(ForkGate, OtherThreadInside_ForkWaitsUntilItHasLeft) {
  ThreadInside other;
  std::atomic<bool> forked{false};
  bool had_left = false;
  std::thread forking([&] {
    expect_child_succeeds(pass);
    had_left = other.has_left();
    forked = true;
  });
  yield_often();
  EXPECT_FALSE(forked);
  other.leave();
  forking.join();
  EXPECT_TRUE(had_left);
}

TEST(ForkGate, ManyThreadsInside_ForkWaitsForAll) {
  std::atomic<unsigned> left{0};
  std::latch inside(kMoreThreadsThanGates);
  std::atomic<bool> leaving{false};
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kMoreThreadsThanGates; ++i) {
    threads.emplace_back([&] {
      const ForkDelay delay;
      inside.count_down();
      while (!leaving) std::this_thread::yield();
      ++left;
    });
  }
  inside.wait();
  std::thread release([&] { leaving = true; });
  expect_child_succeeds([&] { return left == kMoreThreadsThanGates ? pass() : 1; });
  release.join();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(pass_in_threads(), 0);
}

TEST(ForkGate, ForkingThreadInsideItself_DoesNotWaitForItself) {
  for (int i = 0; i < 3; ++i) {
    const ForkDelay delay;
    const ForkDelay nested;
    expect_child_succeeds([] { return pass() + ChildProcess(pass).wait(); });
  }
  expect_child_succeeds(pass);
  EXPECT_EQ(pass_in_threads(), 0);
}

// The child leaves what its parent's thread has entered, and may fork then.
TEST(ForkGate, ChildLeavesWhatTheForkingThreadEntered_GatesOpen) {
  const auto leave_in_child = [] {
    pid_t child = 0;
    {
      const ForkDelay delay;
      child = fork();
    }
    if (child == 0) _exit(ChildProcess(pass).wait());
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
  };
  EXPECT_EQ(leave_in_child(), 0);
  EXPECT_EQ(pass_in_threads(), 0);
}

TEST(ForkGate, ThreadsThatForkAndOthersThatEnter_AllGetThrough) {
  constexpr int kForks = 20;
  std::atomic<int> failed{0};
  std::atomic<bool> done{false};
  std::vector<std::thread> entering;
  for (int i = 0; i < 3; ++i) {
    entering.emplace_back([&] {
      while (!done) pass();
    });
  }
  std::vector<std::thread> forking;
  for (int i = 0; i < 3; ++i) {
    forking.emplace_back([&] {
      for (int n = 0; n < kForks; ++n) failed += ChildProcess(pass).wait() == 0 ? 0 : 1;
    });
  }
  for (std::thread& thread : forking) thread.join();
  done = true;
  for (std::thread& thread : entering) thread.join();
  EXPECT_EQ(failed, 0);
}

// Threads that begin while a fork is under way go through their first gate then.
TEST(ForkGate, ThreadsThatBeginMeanwhile_AllGetThrough) {
  std::atomic<bool> done{false};
  std::thread beginning([&] {
    while (!done) std::thread(pass).join();
  });
  for (int i = 0; i < 40; ++i) expect_child_succeeds(succeed);
  done = true;
  beginning.join();
  EXPECT_EQ(pass_in_threads(), 0);
}

// The thread sanitizer keeps signals back until the thread calls something that it knows.
#ifndef QZLOG_SANITIZED

/// Forks in the handler of a timer's signal while `interrupted` runs.
int fork_in_signal_handler(void (*interrupted)()) {
  constexpr int kForks = 300;
  static volatile sig_atomic_t forks = 0;
  struct sigaction action = {};
  action.sa_handler = [](int) {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    int status = 0;
    waitpid(child, &status, 0);
    forks = forks + 1;
  };
  sigaction(SIGALRM, &action, nullptr);
  const itimerval every_millisecond = {{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &every_millisecond, nullptr);
  while (forks < kForks) interrupted();
  const itimerval never = {};
  setitimer(ITIMER_REAL, &never, nullptr);
  return 0;
}

std::chrono::steady_clock::duration time_of_forks(void (*interrupted)()) {
  const auto begin = std::chrono::steady_clock::now();
  expect_child_succeeds([&] { return fork_in_signal_handler(interrupted); });
  return std::chrono::steady_clock::now() - begin;
}

// One fork that met the thread between two steps, and waited for it, would take as long as forks wait at most. A busy
// machine may take as long for other reasons, but not every time.
TEST(ForkGate, SignalHandlersThatFork_DoNotWaitForTheirOwnThread) {
#ifdef QZLOG_EMULATED
  GTEST_SKIP() << "the emulator holds locks of its own while a handler forks";
#endif
  const auto longest = std::chrono::milliseconds(ForkDelay::kLongestWaitMilliseconds);
  bool in_time = false;
  for (int attempt = 0; attempt < 5 && !in_time; ++attempt) {
    in_time = time_of_forks([] { pass(); }) < time_of_forks([] {}) + longest;
  }
  EXPECT_TRUE(in_time);
}

#endif

std::atomic<std::mutex*> lock_of_the_program{nullptr};

// The program's handler is called first and keeps the lock that a thread inside waits for.
TEST(ForkGate, HandlerHoldsWhatAThreadInsideWaitsFor_ForkGoesOn) {
  const auto take = [] {
    if (std::mutex* const lock = lock_of_the_program) lock->lock();
  };
  const auto release = [] {
    if (std::mutex* const lock = lock_of_the_program) lock->unlock();
  };
  static std::mutex lock;
  ASSERT_EQ(pthread_atfork(take, release, release), 0);
  std::atomic<bool> done{false};
  std::thread inside([&] {
    while (!done) {
      const ForkDelay delay;
      const std::lock_guard<std::mutex> hold(lock);
    }
  });
  lock_of_the_program = &lock;
  for (int i = 0; i < 3; ++i) expect_child_succeeds(pass);
  lock_of_the_program = nullptr;
  done = true;
  inside.join();
  EXPECT_EQ(pass_in_threads(), 0);
}

std::atomic<int> passed_in_handlers{0};
std::atomic<bool> handlers_enter{false};

void enter_in_handler() {
  if (!handlers_enter) return;
  const ForkDelay delay;
  ++passed_in_handlers;
}

// A program's own handlers may use the library.
TEST(ForkGate, EnteredInHandlersOfAFork_LetThrough) {
  ASSERT_EQ(pthread_atfork(enter_in_handler, enter_in_handler, enter_in_handler), 0);
  handlers_enter = true;
  expect_child_succeeds([] { return passed_in_handlers == 2 ? pass() : 1; });
  handlers_enter = false;
  EXPECT_EQ(passed_in_handlers, 2);
  EXPECT_EQ(pass_in_threads(), 0);
}

/// Forks again and again while other threads take and leave a lock; each child takes it too.
template <typename Take>
void expect_lock_free_in_children(Take take) {
  std::atomic<bool> done{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      while (!done) take();
    });
  }
  for (int i = 0; i < 40; ++i) {
    ASSERT_EQ(ChildProcess([&] {
                take();
                return 0;
              }).wait(),
              0)
        << i;
  }
  done = true;
  for (std::thread& thread : threads) thread.join();
}

TEST(ForkWhileLocked, ByReaders_FreeInTheChild) {
  qz_LOG_CRWLock lock(nullptr);
  expect_lock_free_in_children([&] { const qz_LOG_CReaderSentry reader(lock); });
}

TEST(ForkWhileLocked, ByWriters_FreeInTheChild) {
  qz_LOG_CRWLock lock(nullptr);
  expect_lock_free_in_children([&] { const qz_LOG_CWriterSentry writer(lock); });
}

TEST(ForkWhileLocked, ByHoldersOfAMutex_FreeInTheChild) {
  Mutex mutex;
  expect_lock_free_in_children([&] { const MutexSentry sentry(mutex); });
}

TEST(ForkWhileLocked, ByTheSettings_FreeInTheChild) {
  expect_lock_free_in_children([] { const qz_THREAD_global_lock lock; });
}

}  // namespace
