#ifndef QZLOG_SINKS_FILE_SINK_CORES_H
#define QZLOG_SINKS_FILE_SINK_CORES_H

#include <atomic>
#include <memory>

#include "foundation/locks.h"
#include "foundation/no_copies.h"
#include "sinks/file_sink_core.h"

namespace qzlog {

/// The writer of a file sink that belongs to this process: another one after a fork. Any thread.
class FileSinkCores : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Throws QZX_logging_illegal_argument, which names the setting, QZX_logging_file_operation_failed, QZX_memory_alloc.
  FileSinkCores(const qz_LOG_FileSinkSettings& settings, FileSinkCore::Lines lines);
  ~FileSinkCores();

  const qz_LOG_FileSinkSettings& settings() const { return settings_; }
  /// The one that writes; opened when this is a new process. QZX_memory_alloc, std::bad_alloc.
  FileSinkCore& get() {
    FileSinkCore* const current = current_.load(std::memory_order_acquire);
    if (current->is_abandoned()) [[unlikely]]
      return renew();
    return *current;
  }

  bool is_closed() const { return is_closed_.load(std::memory_order_relaxed); }
  /// Closes what this process has opened. True the first time; `left` are the entries that are left.
  bool close(unsigned milliseconds, FileSinkCore::Left& left);

 private:
  FileSinkCore& renew();
  void leave_to_parent();

  const qz_LOG_FileSinkSettings settings_;
  const FileSinkCore::Lines lines_;
  Mutex mutex_;
  std::shared_ptr<FileSinkCore> owner_;
  std::atomic<FileSinkCore*> current_;
  std::atomic<bool> is_closed_{false};
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_FILE_SINK_CORES_H
