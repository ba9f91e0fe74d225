#ifndef QZLOG_TOOLS_COUNT_BAR_CHART_H
#define QZLOG_TOOLS_COUNT_BAR_CHART_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>

#include "tools/count/count_report.h"

namespace qzlog_tool {

/// `count` as a bar of block characters (UTF-8), exact to an eighth of a character; `maximum` fills `columns`. Whatever
/// is more than nothing has at least an eighth.
std::string bar(std::uint64_t count, std::uint64_t maximum, std::size_t columns);

/// One line for each day: date, count, bar. `days` is in order. Days between them without a count have a line too, many
/// of them in a row one together. Lines have at most `columns` columns, as far as dates and counts leave any.
void write_bar_chart(std::span<const DayTotal> days, std::size_t columns, std::ostream& out);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_BAR_CHART_H
