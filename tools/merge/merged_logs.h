#ifndef QZLOG_TOOLS_MERGE_MERGED_LOGS_H
#define QZLOG_TOOLS_MERGE_MERGED_LOGS_H

#include <compare>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/logs/log_inputs.h"
#include "tools/merge/merge_reading.h"
#include "tools/merge/merged_log.h"

namespace qzlog_tool {

/// The lines of several logs as those of one, by time.
///
/// A log's lines stay in their order: one that says no time, or an earlier one than a line before it, comes
/// directly behind the line before it; at the beginning of a log it comes first. Among lines of one second those of the
/// log that was given first come first. What a line says of lost entries comes when it was written.
///
/// Takes memory and a descriptor for each log, whatever their sizes: where lines are short about 100 KiB, and as with
/// any reader up to four times as much as the longest.
class MergedLogs {
 public:
  /// How many logs are merged at most. A process may open 1,024 files unless it is told otherwise.
  static constexpr std::size_t kMostLogs = 500;

  /// Nothing is opened yet. Throws CommandError (cannot run) for more logs than can be merged.
  MergedLogs(std::vector<InputFiles> inputs, MergeReading reading);
  MergedLogs(const MergedLogs&) = delete;
  MergedLogs& operator=(const MergedLogs&) = delete;

  /// As qz_LOG_EntryReader has it: the texts of a line are valid until the next call.
  bool Next(qz_LOG_EntryLine& line);

  /// False when something could not be opened or read, which was told.
  bool all_read() const { return all_read_; }
  /// How many lines the choice has refused in logs that have ended.
  unsigned long long refused_count() const { return refused_; }

 private:
  struct Turn {
    long long moment;
    std::size_t log;
    auto operator<=>(const Turn&) const = default;  // NOLINT(modernize-use-nullptr)
  };

  bool find_turn();
  bool find_next();
  void begin();
  void wait(Turn turn);

  MergeReading reading_;
  std::vector<std::unique_ptr<MergedLog>> logs_;  // null: has ended
  std::vector<Turn> waiting_;                     // a heap, the next turn on top
  std::size_t current_ = 0;
  bool has_begun_ = false;
  bool all_read_ = true;
  unsigned long long refused_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MERGE_MERGED_LOGS_H
