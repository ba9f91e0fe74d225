#ifndef QZLOG_TOOLS_STATS_STATS_OUTPUT_H
#define QZLOG_TOOLS_STATS_STATS_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>

#include "tools/choice/known_definitions.h"
#include "tools/report/finding.h"
#include "tools/shown/shown_times.h"
#include "tools/stats/stats_report.h"

namespace qzlog_tool {

/// What the output of statistics is made with; has to outlive the call.
struct StatsTexts {
  const KnownDefinitions& known;  ///< for the events' names
  ShownTimes& times;              ///< in ISO's style
};

/// Lines that are in no group.
struct StatsRemarks {
  std::uint64_t lost = 0;                                  ///< entries that lines tell of as lost
  std::uint64_t held = 0;                                  ///< ... as held back
  bool has_where = false;                                  ///< --where was given, which cannot be asked of these
  std::uint64_t wrong = 0;                                 ///< lines that are no entries
  std::span<const qzlog_compiler::Finding> findings = {};  ///< about the first of these
};

/// A line for each group, what the others have, and all; with bars in lines of at most `columns` characters. Where
/// lines are not `cut`, those without a bar may be longer.
void write_stats_table(const StatsReport& report, const StatsRemarks& remarks, const StatsTexts& texts,
                       std::size_t columns, bool cut, std::ostream& out);

/// The same as one JSON object.
void write_stats_json(const StatsReport& report, const StatsRemarks& remarks, const StatsTexts& texts,
                      std::ostream& out);

/// The groups as CSV, with a heading, and what is in none of them. The last column says what a record is: a group with
/// a value ("value"), the one without ("none"), or those that are added up ("rest").
void write_stats_csv(const StatsReport& report, const StatsTexts& texts, std::ostream& out);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_STATS_STATS_OUTPUT_H
