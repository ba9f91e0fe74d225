#ifndef QZLOG_TOOLS_RENDER_FOLLOWED_LOG_H
#define QZLOG_TOOLS_RENDER_FOLLOWED_LOG_H

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/logs/log_inputs.h"
#include "tools/render/change_watch.h"
#include "tools/render/entry_rendering.h"
#include "tools/render/followed_file.h"

namespace qzlog_tool {

/// What a log is called: a file's path, a series, or what may become either. An empty path is none.
struct LogName {
  std::string path;
  std::optional<LogSeries> series;
};

/// A log that is written to while it is read. When its file is renamed and the name comes to mean another file, or the
/// next file of the series begins, the former file is read to its end first; it is kept open for a while, for a writer
/// that still has it open too. Of a file that became shorter everything is read again, which is said on stderr.
///
/// Takes memory and descriptors for at most kMostFiles files.
class FollowedLog {
 public:
  static constexpr std::size_t kMostFiles = 4;
  /// How long nothing more is written to a former file before it is closed.
  static constexpr std::chrono::milliseconds kLinger{2000};

  /// What the arguments refer to has to outlive this object.
  FollowedLog(LogName name, EntryRendering& rendering, ChangeWatch& watch);
  ~FollowedLog();
  FollowedLog(const FollowedLog&) = delete;
  FollowedLog& operator=(const FollowedLog&) = delete;

  /// Renders what there is. `names_changed`: files may have come, gone or changed their names.
  void read(bool names_changed);
  /// No file of the log is there.
  bool is_absent() const noexcept { return files_.empty(); }
  /// One that is there could not be opened when names were looked at last, as stderr says.
  bool has_failed() const noexcept { return !told_failure_.empty(); }

 private:
  using Clock = std::chrono::steady_clock;

  struct File {
    File(FileDescriptor descriptor, const std::string& path, SeriesPlace at, EntryRendering& rendering);

    FollowedFile bytes;
    std::string path;
    SeriesPlace place;
    qz_LOG_EntryReader reader;
    std::string told_failure;
    Clock::time_point latest_growth = Clock::now();
    int watch = -1;
  };
  using OpenFile = std::unique_ptr<File>;

  void watch_names();
  void read_files();
  void read_file(File& file);
  bool open_next();
  OpenFile find_next(std::string& failure);
  OpenFile find_by_path();
  OpenFile find_in_series(std::string& failure);
  OpenFile open(const std::string& path, SeriesPlace place);
  bool is_open_already(const std::string& path);
  bool is_open_already(const FileIdentity& identity);
  void tell_deleted(SeriesPlace found) const;
  void close_quiet_files();
  bool is_quiet(const File& file) const;
  void close_first();
  void tell(const std::string& failure, std::string& told) const;

  LogName name_;
  EntryRendering& rendering_;
  ChangeWatch& watch_;
  std::deque<OpenFile> files_;      // the last one is the current one
  SeriesPlace latest_;              // of a series: the current file, or the one before
  std::vector<SeriesPlace> later_;  // files that were found behind it, the next one at the end
  std::string told_failure_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_FOLLOWED_LOG_H
