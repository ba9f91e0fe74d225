#ifndef QZLOG_TOOLS_LOGS_LOG_INPUTS_H
#define QZLOG_TOOLS_LOGS_LOG_INPUTS_H

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// The place of a file in its series: a day as a number YYYYMMDD, and a number of that day from 1.
struct SeriesPlace {
  unsigned day = 0;
  unsigned number = 0;
  auto operator<=>(const SeriesPlace&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// A series of log files, PREFIX.YYYYMMDD.NNNN.
struct LogSeries {
  std::string folder;  ///< as it was given; "" is the working folder
  std::string prefix;

  std::string path_of(SeriesPlace place) const;
  bool operator==(const LogSeries&) const = default;
};

/// The series that FOLDER/PREFIX names, whether there are files of it or not; nothing for a path without a last name.
std::optional<LogSeries> series_of(const std::string& path);

/// The files of a series, in order; none where the folder is not there. Throws UnreadableInput where it cannot be read.
/// Files are begun in order, and none that is there stays out when another one, behind it, is in.
std::vector<SeriesPlace> series_files(const LogSeries& series);

/// What a folder has of logs.
struct FolderLogs {
  std::vector<LogSeries> series;   ///< by prefix
  std::vector<std::string> files;  ///< paths of files *.jsonl, by name; no folders, pipes and devices
};

/// Hidden files are left out. Throws UnreadableInput for a folder that cannot be read.
FolderLogs logs_in(const std::string& folder);

/// The name in a folder.
std::string path_in(const std::string& folder, std::string_view name);

/// The folder that a path is in; "" is the working folder.
std::string folder_of(const std::string& path);

/// Files in their order.
struct InputFiles {
  std::vector<std::string> paths;
  bool were_found = false;  ///< in a folder: one may be gone when it is its turn, for old files are deleted
};

/// What an operand of the command stands for: a file (which need not be there), "-", all logs of a folder, or a series
/// as FOLDER/PREFIX where no such file is there. Throws UnreadableInput for a folder without logs, or one
/// that cannot be read.
InputFiles input_files(const std::string& operand);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_LOG_INPUTS_H
