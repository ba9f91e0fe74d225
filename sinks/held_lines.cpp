#include "sinks/held_lines.h"

#include <algorithm>
#include <ctime>
#include <iterator>

#include "qzlog/qz_exception.h"
#include "sinks/setting_checks.h"

namespace qzlog {

namespace {

constexpr unsigned kHighestLevel = 9;

struct HeldAttribute {
  const char* name;
  qz_AttributeType type;
};
constexpr HeldAttribute kHeldAttributes[] = {
    {"HeldId", TypeUInt4}, {"HeldLevel", TypeUInt1}, {"HeldCount", TypeUInt4}, {"HeldSince", TypeTimestamp}};

bool has_held_attributes(const qz_LOG_LogEntry& entry) {
  return std::all_of(std::begin(kHeldAttributes), std::end(kHeldAttributes), [&](const HeldAttribute& attribute) {
    qz_AttributeType type = TypeUnknown;
    return entry.CheckAttribute(attribute.name, type) >= 0 && type == attribute.type;
  });
}

bool is_held_event(unsigned held_event_id) {
  try {
    return has_held_attributes(qz_LOG_LogEntry(held_event_id, 0));
  } catch (const QZX_logging_entry_type_not_found&) {
    return false;
  }
}

}  // namespace

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

qz_LOG_LogEntry held_entry(unsigned held_event_id, const LossTable::Row& row) {
  qz_LOG_LogEntry entry(held_event_id, std::min(row.level, kHighestLevel));
  entry.AddAttrib4u("HeldId", row.id);
  entry.AddAttrib1u("HeldLevel", static_cast<unsigned char>(row.level));
  entry.AddAttrib4u("HeldCount", row.count);
  entry.AddAttribTime("HeldSince", qz_Time::from_unix_seconds(row.since.tv_sec));
  return entry;
}

void check_held_event(unsigned held_event_id) {
  if (is_held_event(held_event_id)) return;
  refuse_setting("held_event_id", "the event " + std::to_string(held_event_id) +
                                      " is not defined with HeldId (TypeUInt4), HeldLevel (TypeUInt1), HeldCount "
                                      "(TypeUInt4) and HeldSince (TypeTimestamp)");
}

}  // namespace qzlog
