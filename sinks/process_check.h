#ifndef QZLOG_SINKS_PROCESS_CHECK_H
#define QZLOG_SINKS_PROCESS_CHECK_H

#include <sys/types.h>
#include <unistd.h>

#include <atomic>

namespace qzlog {

/// Tells a process that fork made from its parent.
class ProcessCheck {
 public:
  /// True once in each process that was forked since this was made.
  bool is_new_process() noexcept {
    const pid_t self = getpid();
    pid_t known = process_.load(std::memory_order_relaxed);
    return known != self && process_.compare_exchange_strong(known, self);
  }

 private:
  std::atomic<pid_t> process_{getpid()};
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_PROCESS_CHECK_H
