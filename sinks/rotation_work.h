#ifndef QZLOG_SINKS_ROTATION_WORK_H
#define QZLOG_SINKS_ROTATION_WORK_H

#include <atomic>
#include <ctime>
#include <memory>
#include <string>

#include "sinks/log_series.h"
#include "sinks/wake_place.h"

namespace qzlog {

/// What takes long after a rotation and nobody has to wait for: bringing the former file to the disk, deleting old
/// ones. A thread of its own does it, which is gone afterwards; the caller itself where there can be none.
class RotationWork {
 public:
  struct Task {
    LogSeries series;
    std::string path_to_sync;  // "": none
    unsigned keep_files;
    unsigned keep_days;
    std::time_t now;
  };

  /// Without memory old files stay until the next rotation, and what is not synced is counted.
  void start(Task task) noexcept;
  /// Waits so long for everything that was started.
  void wait(unsigned milliseconds) const;
  unsigned long long sync_failures() const { return state_->sync_failures.load(std::memory_order_relaxed); }

 private:
  struct State {
    std::atomic<unsigned> running{0};
    std::atomic<unsigned long long> sync_failures{0};
    WakePlace done;
  };
  struct Job;

  static void* run(void* job) noexcept;

  const std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_ROTATION_WORK_H
