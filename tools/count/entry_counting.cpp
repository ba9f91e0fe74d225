#include "tools/count/entry_counting.h"

namespace qzlog_tool {

std::optional<CalendarDay> entry_day(const qz_LOG_LogEntry& entry) {
  const qz_Time time = entry.GetTimestamp(false);
  return calendar_day(time.get_year(), time.get_month(), time.get_day());
}

EntryCounting::EntryCounting(const std::string& counter)
    : file_(parse_counter_path(counter), MissingCounter::kCreate) {}

bool EntryCounting::add(const qz_LOG_LogEntry& entry, bool has_time) {
  const std::optional<CalendarDay> day = has_time ? entry_day(entry) : local_today();
  if (day) ++gathered_[{*day, counter_key(entry.GetEntryID())}];
  return day.has_value();
}

void EntryCounting::flush() {
  for (const auto& [combination, times] : gathered_) file_.increase(combination.first, combination.second, times);
  gathered_.clear();
}

void EntryCounting::close() {
  flush();
  file_.close();
}

}  // namespace qzlog_tool
