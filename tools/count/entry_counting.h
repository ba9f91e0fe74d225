#ifndef QZLOG_TOOLS_COUNT_ENTRY_COUNTING_H
#define QZLOG_TOOLS_COUNT_ENTRY_COUNTING_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "qzlog/logentry.h"
#include "tools/count/counter_file.h"

namespace qzlog_tool {

/// The key under which an entry ID is counted. Keys have a sign: IDs above 2147483647 become negative.
inline std::int32_t counter_key(std::uint32_t entry_id) { return static_cast<std::int32_t>(entry_id); }

/// The local date of an entry's time; nothing where that is not in the years 1 to 9999.
std::optional<CalendarDay> entry_day(const qz_LOG_LogEntry& entry);

/// Counts entries by day and ID. Counts are gathered and go into the file together, one search for each day and ID
/// instead of one for each entry.
class EntryCounting {
 public:
  /// Opens or makes the counter. Throws CommandError (cannot run).
  explicit EntryCounting(const std::string& counter);

  /// Gathers one for the entry's ID, on the local date of its time, today when it has none. False, with nothing
  /// counted, when that date is not in the years 1 to 9999.
  bool add(const qz_LOG_LogEntry& entry, bool has_time);
  /// Writes what was gathered. Throws CommandError (cannot run).
  void flush();
  /// Closes the counter, with everything written. Throws CommandError (cannot run), also for what was written before.
  void close();

 private:
  CounterFile file_;
  std::map<std::pair<CalendarDay, std::int32_t>, std::uint64_t> gathered_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_ENTRY_COUNTING_H
