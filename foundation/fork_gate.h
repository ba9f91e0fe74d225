#ifndef QZLOG_FOUNDATION_FORK_GATE_H
#define QZLOG_FOUNDATION_FORK_GATE_H

#include <atomic>

#include "foundation/cache_line.h"
#include "foundation/no_copies.h"

namespace qzlog {

/// While one of these lives, a fork() in another thread waits. A forked process has the thread that forked and no
/// other: a lock that another held, or a thing that it was just making once for all, would stay locked or half made for
/// ever. So every lock of the library is held, and everything of other libraries that may lock is called (ICU; the C
/// library for the time zone), with one of these alive. The process that fork() makes then has nothing to repair.
///
/// They may be nested; a thread that forks while it has one of its own (a callback or a signal handler that forks) does
/// not wait for itself. Making one waits while another thread forks. Costs about a dozen instructions, and no memory;
/// different threads mostly write to different cache lines. Usable before main and after the thread's own objects are
/// gone.
///
/// Nobody waits for longer than kLongestWaitMilliseconds: threads inside may be waiting for a lock that a handler of
/// the program's has taken for the fork, or that handler for a lock of a thread before a gate. Who has waited that long
/// goes on, and the forked process may then find something locked, as it would without gates.
class ForkDelay : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr int kLongestWaitMilliseconds = 1000;

  ForkDelay() noexcept {
    if (depth_++ != 0) return;
    // For a signal handler, a thread counts as inside from before it enters until after it has left.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    if (gate_ == nullptr || gate_->entered.fetch_add(1, std::memory_order_acquire) < 0) [[unlikely]]
      enter_slowly();
  }
  ~ForkDelay() {
    if (depth_ == 1) gate_->entered.fetch_sub(1, std::memory_order_release);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    --depth_;
  }

 private:
  friend struct ForkHandlers;

  /// How many threads are inside, negative while a fork is under way. A thread always goes through the same gate, which
  /// it shares with others when there are more threads than gates.
  struct alignas(kCacheLine) Gate {
    std::atomic<int> entered{0};
  };
  static constexpr unsigned kGates = 64;

  static void enter_slowly() noexcept;

  static inline constinit thread_local unsigned depth_ = 0;
  static inline constinit thread_local Gate* gate_ = nullptr;
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_FORK_GATE_H
