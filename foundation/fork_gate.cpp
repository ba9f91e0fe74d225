#include "foundation/fork_gate.h"

#include <pthread.h>
#include <sched.h>

#include <climits>
#include <ctime>
#include <mutex>

/// What fork() calls, in the thread that forks.
struct qz_ForkHandlers {
  using Gate = qz_ForkDelay::Gate;
  static constexpr int kClosed = INT_MIN;  // added to a gate, and taken away again, modulo 2^32

  static Gate* assign_gate() noexcept {
    static constinit std::atomic<unsigned> threads{0};
    return &gates[threads.fetch_add(1, std::memory_order_relaxed) % qz_ForkDelay::kGates];
  }

  /// Closes all gates first, so that they empty side by side.
  static void prepare() noexcept {
    one_fork.lock();
    for (Gate& gate : gates) gate.entered.fetch_add(kClosed, std::memory_order_relaxed);
    for (Gate& gate : gates) wait_until_empty(gate);
    // Other handlers of this fork, and the thread itself, are let through.
    ++qz_ForkDelay::depth_;
  }
  static void parent() noexcept {
    --qz_ForkDelay::depth_;
    for (Gate& gate : gates) gate.entered.fetch_sub(kClosed, std::memory_order_release);
    one_fork.unlock();
  }
  /// Threads that were waiting before a gate are gone, and so is their count.
  static void child() noexcept {
    --qz_ForkDelay::depth_;
    for (Gate& gate : gates) gate.entered.store(own_entries(gate), std::memory_order_relaxed);
    one_fork.unlock();
  }

  static void wait_until_open(const Gate& gate) noexcept {
    for (int tries = 0; gate.entered.load(std::memory_order_relaxed) < 0; ++tries) pause(tries);
  }

 private:
  /// What a gate keeps from the thread that forks: one that is in a callback of ours has entered.
  static int own_entries(const Gate& gate) noexcept {
    return &gate == qz_ForkDelay::gate_ && qz_ForkDelay::depth_ != 0 ? 1 : 0;
  }
  static void wait_until_empty(const Gate& gate) noexcept {
    const int empty = kClosed + own_entries(gate);
    for (int tries = 0; gate.entered.load(std::memory_order_acquire) != empty; ++tries) pause(tries);
  }
  /// Threads are inside for microseconds, unless they read a file. One of real-time priority must not keep the
  /// processor from the one that it waits for.
  static void pause(int tries) noexcept {
    constexpr int kYields = 50;
    if (tries < kYields) {
      sched_yield();
    } else {
      const std::timespec moment = {0, 100'000};
      nanosleep(&moment, nullptr);
    }
  }

  static inline constinit Gate gates[qz_ForkDelay::kGates] = {};
  static inline constinit std::mutex one_fork;
};

namespace {

/// As soon as the library is loaded: the handlers of programs that lock something of their own around fork() were then
/// added later, and are called before these close the gates and after they are open again.
[[gnu::constructor]] void add_fork_handlers() {
  // Only memory can be missing, which the C library has set aside for the first handlers of a process.
  static_cast<void>(pthread_atfork(qz_ForkHandlers::prepare, qz_ForkHandlers::parent, qz_ForkHandlers::child));
}

}  // namespace

void qz_ForkDelay::enter_slowly() noexcept {
  if (gate_ == nullptr) {
    gate_ = qz_ForkHandlers::assign_gate();
    if (gate_->entered.fetch_add(1, std::memory_order_acquire) >= 0) return;
  }
  do {
    gate_->entered.fetch_sub(1, std::memory_order_relaxed);
    qz_ForkHandlers::wait_until_open(*gate_);
  } while (gate_->entered.fetch_add(1, std::memory_order_acquire) < 0);
}
