#ifndef QZLOG_SINKS_WAKE_PLACE_H
#define QZLOG_SINKS_WAKE_PLACE_H

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstdint>
#include <ctime>

namespace qzlog {

/// Where threads wait for something that others have done. Unlike a condition variable it holds no lock, so that a
/// forked process may leave or destroy it in any state; waking costs no system call where nobody waits.
class WakePlace {
 public:
  /// To be read before looking whether what one waits for has happened.
  std::uint32_t ticket() const noexcept { return word_.load(std::memory_order_seq_cst); }

  /// Returns when something has been done since the ticket was read, after so many milliseconds, or for no reason.
  void wait(std::uint32_t ticket, long long milliseconds) noexcept {
    if (milliseconds <= 0) return;
    waiting_.fetch_add(1, std::memory_order_seq_cst);
    const std::timespec bound = {static_cast<std::time_t>(milliseconds / 1000),
                                 static_cast<long>(milliseconds % 1000 * 1'000'000)};
    syscall(SYS_futex, &word_, FUTEX_WAIT_PRIVATE, ticket, &bound, nullptr, 0);
    waiting_.fetch_sub(1, std::memory_order_relaxed);
  }

  void wake_all() noexcept {
    word_.fetch_add(1, std::memory_order_seq_cst);
    if (waiting_.load(std::memory_order_seq_cst) != 0) {
      syscall(SYS_futex, &word_, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
    }
  }

 private:
  static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));
  std::atomic<std::uint32_t> word_{0};
  std::atomic<int> waiting_{0};
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_WAKE_PLACE_H
