#include "tools/stats/stats_report.h"

#include <algorithm>

namespace qzlog_tool {

namespace {

using Row = GroupTable::Row;

/// Those without a key are last.
bool is_before(const GroupKey& one, const GroupKey& other) {
  const bool has_key = one.kind != GroupKey::Kind::kNone;
  const bool other_has_key = other.kind != GroupKey::Kind::kNone;
  return has_key != other_has_key ? has_key : one < other;
}

bool comes_before(const Row& one, const Row& other) { return is_before(one.key, other.key); }

bool is_larger(const Row& one, const Row& other) {
  if (one.group->count != other.group->count) return one.group->count > other.group->count;
  return comes_before(one, other);
}

bool has_own_order(GroupBy by) { return by == GroupBy::kLevel || by == GroupBy::kHour || by == GroupBy::kDay; }

}  // namespace

StatsReport make_stats_report(const GroupTable& table, const CountedBy& counted, std::size_t top) {
  StatsReport report;
  report.counted = counted;
  report.rows = table.rows();
  report.rest.add(table.forgotten());
  std::sort(report.rows.begin(), report.rows.end(), is_larger);
  for (const Row& row : report.rows) report.total.add(*row.group);
  report.total.add(table.forgotten());
  while (top != 0 && report.rows.size() > top) {
    report.rest.add(*report.rows.back().group);
    report.rows.pop_back();
  }
  if (!report.rows.empty()) report.largest = report.rows.front().group->count;
  for (const Row& row : report.rows) report.missed = std::max(report.missed, row.group->missed);
  if (has_own_order(counted.by)) std::sort(report.rows.begin(), report.rows.end(), comes_before);
  return report;
}

}  // namespace qzlog_tool
