#ifndef QZLOG_TOOLS_STATS_STATS_REPORT_H
#define QZLOG_TOOLS_STATS_STATS_REPORT_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/stats/group_table.h"
#include "tools/stats/grouping.h"

namespace qzlog_tool {

/// Groups in the order in which people see them, and their sums.
struct StatsReport {
  CountedBy counted;
  std::vector<GroupTable::Row> rows;
  Group rest;  ///< what is in none of the rows
  Group total;
  std::uint64_t largest = 0;  ///< of the rows' counts
  std::uint64_t missed = 0;   ///< a row may lack so many lines, which are in the rest
};

/// The `top` largest groups, 0 for all. Times and levels are in their order, lines without one at the end; other groups
/// by their counts. The table has to outlive the result and stay as it is.
StatsReport make_stats_report(const GroupTable& table, const CountedBy& counted, std::size_t top);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_STATS_STATS_REPORT_H
