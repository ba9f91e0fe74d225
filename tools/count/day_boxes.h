#ifndef QZLOG_TOOLS_COUNT_DAY_BOXES_H
#define QZLOG_TOOLS_COUNT_DAY_BOXES_H

#include <vector>

#include "tools/count/calendar_day.h"

namespace qzlog_tool {

/// The days whose year, month and day each lie between those of two days.
struct DayBox {
  CalendarDay from;
  CalendarDay to;

  /// There is no such day.
  bool is_empty() const { return from.year() > to.year() || from.month() > to.month() || from.day() > to.day(); }
};

/// Boxes that together have each day from `from` to `to` once, and no other; 15 at most. `from` is not the later one.
std::vector<DayBox> boxes_of_interval(CalendarDay from, CalendarDay to);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_DAY_BOXES_H
