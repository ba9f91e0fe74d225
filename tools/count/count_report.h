#ifndef QZLOG_TOOLS_COUNT_COUNT_REPORT_H
#define QZLOG_TOOLS_COUNT_COUNT_REPORT_H

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tools/count/calendar_day.h"
#include "tools/count/counter_reader.h"

namespace qzlog_tool {

/// Names of keys.
using KeyNames = std::unordered_map<std::int32_t, std::string>;

struct DayTotal {
  CalendarDay day;
  std::uint64_t count = 0;
};

/// Counts with their sums. A view: the counts have to outlive it.
struct CountReport {
  std::span<const DayCount> counts;
  std::vector<DayTotal> days;                                ///< in order
  std::vector<std::pair<std::int32_t, std::uint64_t>> keys;  ///< in order, with their sums
  std::uint64_t total = 0;
};

/// `counts` is ordered by day and key.
CountReport make_count_report(std::span<const DayCount> counts);

/// A line for each day and key, each day, each key, and all. `names` is null where none are known.
void write_count_table(const CountReport& report, const KeyNames* names, std::ostream& out);

/// Of the records that were left out.
struct CountDamage {
  std::uint64_t records = 0;
  std::span<const qzlog_compiler::Finding> findings;  ///< about the first of them
};

/// The same as one JSON object, with the damage.
void write_count_json(const CountReport& report, const KeyNames* names, const CountDamage& damage, std::ostream& out);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COUNT_REPORT_H
