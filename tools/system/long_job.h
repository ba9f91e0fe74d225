#ifndef QZLOG_TOOLS_SYSTEM_LONG_JOB_H
#define QZLOG_TOOLS_SYSTEM_LONG_JOB_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace qzlog_tool {

/// While it lives, something is done that tells nothing of itself. When that takes longer than a second, a terminal on
/// stderr shows for how long it has gone on, in a line that is taken away at the end; not where quiet is wanted.
///
///     compiling storage.yaml: 3 s
///
/// Nothing else may be written to stderr meanwhile.
class LongJob {
 public:
  explicit LongJob(const std::string& what);
  ~LongJob();
  LongJob(const LongJob&) = delete;
  LongJob& operator=(const LongJob&) = delete;

 private:
  void show_unless_it_fails() noexcept;
  void show_until_end();

  const std::string what_;
  std::mutex mutex_;
  std::condition_variable ends_;
  bool is_ending_ = false;  // guarded by mutex_
  std::thread thread_;      // none where nothing is shown
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_LONG_JOB_H
