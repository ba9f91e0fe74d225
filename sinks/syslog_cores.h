#ifndef QZLOG_SINKS_SYSLOG_CORES_H
#define QZLOG_SINKS_SYSLOG_CORES_H

#include <atomic>
#include <memory>

#include "foundation/locks.h"
#include "foundation/no_copies.h"
#include "sinks/syslog_core.h"

namespace qzlog {

/// The writer of a syslog sink that belongs to this process: another one after a fork. Any thread.
class SyslogCores : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Throws QZX_logging_illegal_argument, which names the setting, and QZX_memory_alloc. `failures` has to outlive this
  /// object.
  SyslogCores(const qz_LOG_SyslogSinkSettings& settings, LostMessages& failures);
  ~SyslogCores();

  const qz_LOG_SyslogSinkSettings& settings() const { return settings_; }
  /// The one that writes; made when this is a new process. QZX_memory_alloc, std::bad_alloc.
  SyslogCore& get() {
    SyslogCore* const current = current_.load(std::memory_order_acquire);
    if (current->is_abandoned()) [[unlikely]]
      return renew();
    return *current;
  }

  bool is_closed() const { return is_closed_.load(std::memory_order_relaxed); }
  /// Closes what this process has opened. How many entries are left.
  unsigned long long close(unsigned milliseconds);

 private:
  SyslogCore& renew();
  void leave_to_parent();

  const qz_LOG_SyslogSinkSettings settings_;
  LostMessages& failures_;
  Mutex mutex_;
  std::shared_ptr<SyslogCore> owner_;
  std::atomic<SyslogCore*> current_;
  std::atomic<bool> is_closed_{false};
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_CORES_H
