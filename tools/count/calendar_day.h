#ifndef QZLOG_TOOLS_COUNT_CALENDAR_DAY_H
#define QZLOG_TOOLS_COUNT_CALENDAR_DAY_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace qzlog_tool {

using CalendarDay = std::chrono::year_month_day;

/// Nothing unless the three are a real date in the years 1 to 9999.
std::optional<CalendarDay> calendar_day(int year, int month, int day);

/// Reads YYYY-MM-DD, and nothing else.
std::optional<CalendarDay> parse_day(std::string_view text);

/// YYYY-MM-DD.
std::string day_text(CalendarDay day);

/// Today on the local clock.
CalendarDay local_today();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_CALENDAR_DAY_H
