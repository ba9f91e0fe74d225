#ifndef QZLOG_SINKS_LOG_DESTINATION_H
#define QZLOG_SINKS_LOG_DESTINATION_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <string>
#include <string_view>

#include "qzlog/file_sink.h"
#include "sinks/log_file.h"
#include "sinks/log_series.h"
#include "sinks/rotation_work.h"
#include "sinks/series_lock.h"

namespace qzlog {

/// Where the lines of a sink go: one file, or the latest of a series, which other processes write too. One thread at a
/// time; what takes a SeriesHold is called with the lock of this destination held, or in vain asked for.
class LogDestination : public qz_UTIL_no_inadvertant_copies {
 public:
  struct Counts {
    std::atomic<unsigned long long> rotations{0};
    std::atomic<unsigned long long> reopened{0};
    std::atomic<unsigned long long> truncations{0};
    std::atomic<unsigned long long> damaged{0};
    std::atomic<unsigned long long> fragments{0};
    std::atomic<unsigned long long> sync_failures{0};
    std::atomic<bool> numbers_exhausted{false};
  };

  explicit LogDestination(const qz_LOG_FileSinkSettings& settings);

  /// The folder, and the beginning of the names of what stands beside the log.
  const std::string& folder() const { return folder_; }
  const std::string& hidden_name() const { return hidden_name_; }

  /// Makes the lock; the file is opened by prepare.
  void open_lock();
  SeriesLock& lock() { return lock_; }

  /// Sees to it that the right file is open for so many bytes at that time. False with errno.
  bool prepare(const SeriesHold& hold, const std::timespec& now, std::size_t bytes) {
    return is_settled(hold, now, bytes) || settle(hold, now, bytes);
  }
  /// Appends lines. Returns how many bytes of whole lines are in the file; errno has the reason when that is not all.
  std::size_t append(const SeriesHold& hold, std::string_view lines) {
    if (is_torn(hold) && !close_fragment(hold)) [[unlikely]]
      return 0;
    const std::size_t written = file_.append(lines, settings_.longest_wait_milliseconds);
    is_unsynced_ = true;
    set_size(hold, size(hold) + written);
    return written == lines.size() ? written : cut_to_lines(hold, lines.substr(0, written));
  }
  /// Where the next line begins, unless others write the file without asking. False when the system does not tell.
  bool get_end(std::uint64_t& end) const { return file_.get_size(end); }

  bool reopen(const SeriesHold& hold, const std::timespec& now);
  bool rotate(const SeriesHold& hold, const std::timespec& now);
  bool sync();
  void close(unsigned longest_wait_milliseconds);
  /// In a forked process: what is open is the parent's.
  void abandon() noexcept;

  const LogFile& file() const { return file_; }
  const Counts& counts() const { return counts_; }
  unsigned long long sync_failures() const { return counts_.sync_failures + work_.sync_failures(); }

 private:
  static constexpr std::time_t kNever = std::numeric_limits<std::time_t>::min();

  bool is_series() const { return !settings_.prefix.empty(); }
  std::uint64_t size(const SeriesHold& hold) const { return hold.page() != nullptr ? hold.page()->size : size_; }
  void set_size(const SeriesHold& hold, std::uint64_t size) {
    size_ = size;
    if (SeriesLock::Page* const page = hold.page()) page->size = size;
  }
  bool is_torn(const SeriesHold& hold) const { return hold.page() != nullptr ? hold.page()->is_torn != 0 : is_torn_; }
  void set_torn(const SeriesHold& hold, bool torn);
  bool close_fragment(const SeriesHold& hold);
  std::size_t cut_to_lines(const SeriesHold& hold, std::string_view written);
  bool end_fragment(const SeriesHold& hold, std::size_t bytes);

  /// Whether everything was right earlier in this second, and the only thing that can have changed since has not.
  bool is_settled(const SeriesHold& hold, const std::timespec& now, std::size_t bytes) const {
    return now.tv_sec == settled_ && !hold.is_after_death() && !is_replaced_by_others(hold) &&
           (!is_series() || size(hold) + bytes <= largest_bytes());
  }
  bool settle(const SeriesHold& hold, const std::timespec& now, std::size_t bytes);
  std::uint64_t largest_bytes() const {
    return settings_.largest_file_bytes != 0 ? settings_.largest_file_bytes : UINT64_MAX;
  }
  bool open_current(const SeriesHold& hold, std::timespec now);
  bool open_latest(const SeriesHold& hold, std::timespec now);
  bool begin_next_file(const SeriesHold& hold, const std::timespec& now);
  bool choose_file(const SeriesHold& hold, std::timespec now, SeriesFile& chosen);
  bool adopt(const SeriesHold& hold, LogFile& file, SeriesFile place);
  bool is_replaced_by_others(const SeriesHold& hold) const {
    const SeriesLock::Page* const page = hold.page();
    return is_series() && page != nullptr && page->day != 0 && SeriesFile{page->day, page->sequence} != current_;
  }
  bool check_name(const SeriesHold& hold, const std::timespec& now);
  bool is_due(const SeriesHold& hold, const std::timespec& now, std::size_t bytes);
  void tell_exhaustion();

  const qz_LOG_FileSinkSettings& settings_;
  std::string folder_;
  std::string hidden_name_;
  LogSeries series_;
  SeriesLock lock_;
  LogFile file_;
  SeriesFile current_;
  LocalDay local_day_;
  std::uint64_t size_ = 0;
  bool is_torn_ = false;
  bool is_unsynced_ = false;  // lines were written to the file since it was last brought to the disk
  std::time_t checked_ = 0;
  std::time_t settled_ = kNever;  // the second in which everything was found right, while this file is open
  std::time_t retry_rotation_ = 0;
  long long retry_open_ = 0;
  RotationWork work_;
  Counts counts_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_LOG_DESTINATION_H
