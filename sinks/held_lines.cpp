#include "sinks/held_lines.h"

#include <ctime>

namespace qzlog {

std::vector<LossTable::Row> rows_of(const qz_LOG_HeldEntries* held, std::size_t count) {
  std::vector<LossTable::Row> rows;
  rows.reserve(count);
  for (const qz_LOG_HeldEntries* each = held; each != held + count; ++each) {
    std::timespec since = {};
    since.tv_sec = static_cast<std::time_t>(each->since_seconds);
    since.tv_nsec = static_cast<long>(each->since_nanoseconds);
    rows.push_back({each->id, each->level, each->count, since});
  }
  return rows;
}

std::vector<qz_LOG_HeldEntries> held_of(const std::vector<LossTable::Row>& rows) {
  std::vector<qz_LOG_HeldEntries> held;
  held.reserve(rows.size());
  for (const LossTable::Row& row : rows) {
    held.push_back({row.id, row.level, row.count, row.since.tv_sec, static_cast<unsigned>(row.since.tv_nsec)});
  }
  return held;
}

}  // namespace qzlog
