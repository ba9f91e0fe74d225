#ifndef QZLOG_SINKS_LOG_SERIES_H
#define QZLOG_SINKS_LOG_SERIES_H

#include <compare>
#include <ctime>
#include <string>
#include <vector>

namespace qzlog {

/// One file of a series: a day as a number YYYYMMDD, and a number of that day from 1.
struct SeriesFile {
  static constexpr unsigned kLastNumber = 9999;

  unsigned day = 0;
  unsigned number = 0;
  auto operator<=>(const SeriesFile&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// The files of one prefix in one folder.
class LogSeries {
 public:
  LogSeries(std::string folder, std::string prefix) : folder_(std::move(folder)), prefix_(std::move(prefix)) {}

  std::string path_of(SeriesFile file) const;
  /// Adds them to `files`, in order. False with errno when they cannot be found out; std::bad_alloc. In a folder that
  /// may be written to but not be read there are none.
  bool list(std::vector<SeriesFile>& files) const;
  /// `latest` stays as it is when there is none. Otherwise as list().
  bool find_latest(SeriesFile& latest) const;
  /// Deletes the earliest ones: all but `keep_files`, and those before the last `keep_days` days (0: no bound), never
  /// the latest, and none that a writer holds.
  void delete_old(unsigned keep_files, unsigned keep_days, std::time_t now) const;

 private:
  void delete_unless_held(SeriesFile file) const;

  std::string folder_;
  std::string prefix_;
};

/// The local day of a moment, asked of the system once in a day.
class LocalDay {
 public:
  /// As a number YYYYMMDD.
  unsigned number_of(std::time_t moment);

 private:
  std::time_t begin_ = 0;
  std::time_t end_ = 0;
  unsigned number_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_LOG_SERIES_H
