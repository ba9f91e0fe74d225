#ifndef QZLOG_TOOLS_STATS_LINE_TALLY_H
#define QZLOG_TOOLS_STATS_LINE_TALLY_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/choice/entry_choice.h"
#include "tools/choice/line_tail.h"
#include "tools/logs/line_reporter.h"
#include "tools/merge/definition_sets.h"
#include "tools/report/finding.h"
#include "tools/stats/entry_scan.h"
#include "tools/stats/group_table.h"
#include "tools/stats/grouping.h"

namespace qzlog_tool {

/// What decides on lines, null where it was not asked for.
struct TallyParts {
  EntryChoice* choice = nullptr;   ///< which lines are wanted
  LineTail* tail = nullptr;        ///< holds the wanted ones until the last of them are known
  DefinitionSets* sets = nullptr;  ///< where there are several definitions
};

/// Counts lines of entries, from whichever files they come. Where all of them are wanted, most are counted by their
/// bytes alone.
class LineTally : public qz_LOG_LineErrorHandler, private qz_LOG_LineChoice {
 public:
  /// How many of the lines that are wrong are kept as findings.
  static constexpr std::size_t kKeptFindings = 100;

  /// What the arguments refer to has to outlive this object.
  LineTally(Grouping& grouping, EntryScan& scan, LineReporter& reporter, const TallyParts& parts)
      : grouping_(grouping), scan_(scan), reporter_(reporter), parts_(parts) {}

  /// The lines of a reader that was made with this object as its handler, until its end. What its source throws goes
  /// on.
  void read(qz_LOG_EntryReader& reader);
  void TakeLineError(const qz_LOG_LineError& error) override;
  /// No other line will be counted.
  bool is_complete() const { return parts_.choice != nullptr && parts_.choice->is_complete(); }
  /// Counts what was held as the last lines. To be called once, behind everything.
  void finish();

  const GroupTable& table() const { return table_; }
  /// How many entries lines tell of as lost, or as held back.
  std::uint64_t lost() const { return lost_; }
  std::uint64_t held() const { return held_; }

  std::span<const qzlog_compiler::Finding> findings() const { return findings_; }

 private:
  bool TakesLine(const char* line, std::size_t length) override;
  void take_lines(qz_LOG_EntryReader& reader, qz_LOG_LineChoice* choice);
  void take_line();
  void count_line();

  Grouping& grouping_;
  EntryScan& scan_;
  LineReporter& reporter_;
  TallyParts parts_;
  GroupTable table_;
  qz_LOG_EntryLine line_;
  ScannedEntry scanned_;
  std::uint64_t lines_ = 0;
  std::uint64_t lost_ = 0;
  std::uint64_t held_ = 0;
  std::vector<qzlog_compiler::Finding> findings_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_STATS_LINE_TALLY_H
