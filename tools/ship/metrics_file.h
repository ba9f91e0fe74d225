#ifndef QZLOG_TOOLS_SHIP_METRICS_FILE_H
#define QZLOG_TOOLS_SHIP_METRICS_FILE_H

#include <chrono>
#include <csignal>
#include <functional>
#include <string>

namespace qzlog_tool {

/// Where metrics go: to a file each second, which is replaced in one step, or, without one, to standard error; at once
/// when SIGUSR1 comes, which does nothing else while this object lives. One at a time.
class MetricsFile {
 public:
  /// `path` is empty for none; `text` makes the metrics. Throws CommandError (cannot run) for a file that has anything
  /// but metrics in it.
  MetricsFile(std::string path, std::function<std::string()> text);
  ~MetricsFile();
  MetricsFile(const MetricsFile&) = delete;
  MetricsFile& operator=(const MetricsFile&) = delete;

  /// Writes what is due; the file in any case when `is_last`. One that cannot be written is told of on stderr, once.
  void update(bool is_last);

 private:
  using Clock = std::chrono::steady_clock;

  void write_file();

  std::string path_;
  std::function<std::string()> text_;
  struct sigaction former_ = {};
  Clock::time_point next_ = Clock::now();
  bool told_failure_ = false;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_METRICS_FILE_H
