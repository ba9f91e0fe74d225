#ifndef QZLOG_TOOLS_STATS_GROUPING_H
#define QZLOG_TOOLS_STATS_GROUPING_H

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/choice/known_definitions.h"
#include "tools/options/reader_zone.h"
#include "tools/shown/shown_times.h"
#include "tools/stats/entry_scan.h"
#include "tools/stats/group_table.h"

namespace qzlog_tool {

enum class GroupBy { kEvent, kLevel, kHour, kDay, kWriter, kAttribute };

/// How lines are counted, as the command line says.
struct CountedBy {
  GroupBy by = GroupBy::kEvent;
  std::string attribute = {};   ///< for kAttribute
  bool has_integers = false;    ///< its values are integers, whatever the event
  std::string numbers_of = {};  ///< the attribute whose numbers are looked at; empty: none
  bool has_fractions = false;   ///< they may have some

  /// `by` is event, level, hour, day, writer, an attribute's name, or attribute:NAME; `numbers_of` an attribute's name
  /// or empty. Throws CommandError (cannot run) for attributes that the definitions do not have, and for numbers of one
  /// that has none.
  static CountedBy read(const std::string& by, const std::string& numbers_of, const KnownDefinitions& known);
};

/// An event as the number of its group: an ID, and which of its names (KnownEvent::names) it has, for several
/// definitions may differ.
struct CountedEvent {
  std::uint32_t id = 0;
  std::uint32_t name = 0;

  static CountedEvent of(long long number) {
    const auto bits = static_cast<std::uint64_t>(number);
    return {static_cast<std::uint32_t>(bits), static_cast<std::uint32_t>(bits >> 32U)};
  }
  long long number() const { return static_cast<long long>(std::uint64_t{name} << 32U | id); }
};

/// Finds the group of a line and its number, from its entry or from its bytes, which come to the same.
class Grouping {
 public:
  /// `known` has to outlive this object.
  Grouping(CountedBy counted, const KnownDefinitions& known, ReaderZone zone);

  const CountedBy& counted() const { return counted_; }
  /// The attributes that a scan has to find: [0] is grouped by, [1] numbers.
  std::vector<std::string> scanned_attributes() const { return {counted_.attribute, counted_.numbers_of}; }

  void count(const qz_LOG_EntryLine& line, GroupTable& table);
  void count(const ScannedEntry& entry, GroupTable& table);

 private:
  GroupKey key_of(const qz_LOG_EntryLine& line);
  GroupKey key_of(const ScannedEntry& entry);
  GroupKey key_of_event(const qz_LOG_EntryLine& line) const;
  GroupKey key_of_attribute(const qz_LOG_LogEntry& entry);
  GroupKey key_of_moment(long long moment);
  long long first_of_hour(long long moment, long offset);
  GroupKey key_of_value(const ScannedValue& value);

  CountedBy counted_;
  const KnownDefinitions& known_;
  ReaderZone zone_;
  ReaderZone zone_of_hours_;  // asked about their beginnings, which are not near the moments that are asked about
  long long changed_hour_ = 0;
  long long behind_change_ = std::numeric_limits<long long>::max();  // in that hour
  ShownTimes times_;
  std::string value_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_STATS_GROUPING_H
