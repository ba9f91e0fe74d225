#include "foundation/fork_gate.h"

#include <pthread.h>
#include <sched.h>

#include <climits>
#include <ctime>
#include <mutex>

namespace qzlog {

/// What fork() calls, in the thread that forks.
struct ForkHandlers {
  using Gate = ForkDelay::Gate;
  static constexpr int kClosed = INT_MIN;  // added to a gate, and taken away again, modulo 2^32

  static Gate* assign_gate() noexcept {
    static constinit std::atomic<unsigned> threads{0};
    return &gates[threads.fetch_add(1, std::memory_order_relaxed) % ForkDelay::kGates];
  }

  /// Closes all gates first, so that they empty side by side.
  static void prepare() noexcept {
    one_fork.lock();
    for (Gate& gate : gates) gate.entered.fetch_add(kClosed, std::memory_order_relaxed);
    Patience patience;
    for (Gate& gate : gates) wait_until_empty(gate, patience);
    own_entries = ForkDelay::gate_ == nullptr ? 0 : own_entries_now();
    // Other handlers of this fork, and the thread itself, are let through.
    ++ForkDelay::depth_;
  }
  static void parent() noexcept {
    --ForkDelay::depth_;
    for (Gate& gate : gates) gate.entered.fetch_sub(kClosed, std::memory_order_release);
    one_fork.unlock();
  }
  /// Threads that were waiting before a gate are gone, and so is their count.
  static void child() noexcept {
    --ForkDelay::depth_;
    for (Gate& gate : gates) gate.entered.store(&gate == ForkDelay::gate_ ? own_entries : 0, std::memory_order_relaxed);
    one_fork.unlock();
  }

  /// False when that took too long.
  static bool wait_until_open(const Gate& gate) noexcept {
    Patience patience;
    while (gate.entered.load(std::memory_order_relaxed) < 0) {
      if (!patience.wait()) return false;
    }
    return true;
  }

 private:
  /// Threads are inside for microseconds, unless they read a file. One of real-time priority must not keep the
  /// processor from the one that it waits for.
  class Patience {
   public:
    /// False, without waiting, when it has taken too long.
    bool wait() noexcept {
      if (tries_++ < kYields) {
        sched_yield();
        return true;
      }
      if (tries_ > kYields + ForkDelay::kLongestWaitMilliseconds * kNapsInAMillisecond) return false;
      sleep();
      return true;
    }

   private:
    static constexpr int kYields = 50;
    static constexpr int kNapsInAMillisecond = 10;

    /// A thread that is cancelled meanwhile is so later: it cannot end in here.
    static void sleep() noexcept {
      int former = 0;
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &former);
      const std::timespec nap = {0, 1'000'000 / kNapsInAMillisecond};
      nanosleep(&nap, nullptr);
      pthread_setcancelstate(former, &former);
    }

    int tries_ = 0;
  };

  /// The thread that forks may be inside, in a callback of ours or a signal handler; in a signal handler also just
  /// before it enters or after it has left.
  static bool is_empty(const Gate& gate) noexcept {
    const int entered = gate.entered.load(std::memory_order_acquire) - kClosed;
    return entered == 0 || (entered == 1 && &gate == ForkDelay::gate_ && ForkDelay::depth_ != 0);
  }
  static void wait_until_empty(const Gate& gate, Patience& patience) noexcept {
    while (!is_empty(gate) && patience.wait()) {
    }
  }
  /// What the thread's gate keeps from it, once the others have left.
  static int own_entries_now() noexcept {
    return ForkDelay::depth_ != 0 && ForkDelay::gate_->entered.load(std::memory_order_relaxed) != kClosed ? 1 : 0;
  }

  static inline constinit int own_entries = 0;  // guarded by one_fork
  static inline constinit Gate gates[ForkDelay::kGates] = {};
  static inline constinit std::mutex one_fork;
};

namespace {

/// As soon as the library is loaded: the handlers that a program adds later, and that lock something of its own around
/// fork(), are then called before these close the gates and after they are open again. Where the library is loaded
/// later, or the locks are taken inside the gates, waiting has its bound.
[[gnu::constructor]] void add_fork_handlers() {
  // Only memory can be missing, which the C library has set aside for the first handlers of a process.
  static_cast<void>(pthread_atfork(ForkHandlers::prepare, ForkHandlers::parent, ForkHandlers::child));
}

}  // namespace

void ForkDelay::enter_slowly() noexcept {
  if (gate_ == nullptr) {
    gate_ = ForkHandlers::assign_gate();
    if (gate_->entered.fetch_add(1, std::memory_order_acquire) >= 0) return;
  }
  bool waits = true;
  do {
    gate_->entered.fetch_sub(1, std::memory_order_relaxed);
    waits = ForkHandlers::wait_until_open(*gate_);
  } while (gate_->entered.fetch_add(1, std::memory_order_acquire) < 0 && waits);
}

}  // namespace qzlog
