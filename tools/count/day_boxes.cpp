#include "tools/count/day_boxes.h"

namespace qzlog_tool {

namespace {

using std::chrono::December;
using std::chrono::January;
using std::chrono::last;
using std::chrono::months;
using std::chrono::year;
using std::chrono::year_month;
using std::chrono::years;

year_month month_of(CalendarDay date) { return date.year() / date.month(); }

/// The whole months after `before` that come before `behind`, both in one year.
void add_months(year_month before, year_month behind, std::vector<DayBox>& boxes) {
  for (year_month each = before; each < behind; each += months(1)) boxes.push_back({each / 1, each / last});
}

}  // namespace

// Months differ in their lengths: a box of several has the days of all only where the last one has 31.
std::vector<DayBox> boxes_of_interval(CalendarDay from, CalendarDay to) {
  const year_month first = month_of(from);
  const year_month final = month_of(to);
  if (first == final) return {{from, to}};
  std::vector<DayBox> boxes = {{from, first / last}};
  if (from.year() == to.year()) {
    add_months(first + months(1), final, boxes);
  } else {
    if (from.month() != December) boxes.push_back({(first + months(1)) / 1, from.year() / December / 31});
    const year second = from.year() + years(1);
    if (second < to.year()) boxes.push_back({second / January / 1, (to.year() - years(1)) / December / 31});
    add_months(to.year() / January, final, boxes);
  }
  boxes.push_back({final / 1, to});
  return boxes;
}

}  // namespace qzlog_tool
