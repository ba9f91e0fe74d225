#include "sinks/told_event.h"

#include <algorithm>
#include <string>

#include "qzlog/qz_exception.h"
#include "sinks/setting_checks.h"

namespace qzlog {

namespace {

constexpr unsigned kHighestLevel = 9;

/// The attributes of an event that tells, and the setting that names the event.
struct ToldNames {
  const char* setting;
  const char* id;
  const char* level;
  const char* count;
  const char* since;
};

const ToldNames& names_of(ToldOf kind) {
  static constexpr ToldNames kLost = {"lost_event_id", "LostId", "LostLevel", "LostCount", "LostSince"};
  static constexpr ToldNames kHeld = {"held_event_id", "HeldId", "HeldLevel", "HeldCount", "HeldSince"};
  return kind == ToldOf::kLost ? kLost : kHeld;
}

bool has_attribute(const qz_LOG_LogEntry& entry, const char* name, qz_AttributeType wanted) {
  qz_AttributeType type = TypeUnknown;
  return entry.CheckAttribute(name, type) >= 0 && type == wanted;
}

bool is_told_event(const ToldNames& names, unsigned event_id) try {
  const qz_LOG_LogEntry entry(event_id, 0);
  return has_attribute(entry, names.id, TypeUInt4) && has_attribute(entry, names.level, TypeUInt1) &&
         has_attribute(entry, names.count, TypeUInt4) && has_attribute(entry, names.since, TypeTimestamp);
} catch (const QZX_logging_entry_type_not_found&) {
  return false;
}

}  // namespace

qz_LOG_LogEntry told_entry(ToldOf kind, unsigned event_id, const LossTable::Row& row) {
  const ToldNames& names = names_of(kind);
  qz_LOG_LogEntry entry(event_id, std::min(row.level, kHighestLevel));
  entry.AddAttrib4u(names.id, row.id);
  entry.AddAttrib1u(names.level, static_cast<unsigned char>(row.level));
  entry.AddAttrib4u(names.count, row.count);
  entry.AddAttribTime(names.since, qz_Time::from_unix_seconds(row.since.tv_sec));
  return entry;
}

void check_told_event(ToldOf kind, unsigned event_id) {
  const ToldNames& names = names_of(kind);
  if (is_told_event(names, event_id)) return;
  refuse_setting(names.setting, "the event " + std::to_string(event_id) + " is not defined with " + names.id +
                                    " (TypeUInt4), " + names.level + " (TypeUInt1), " + names.count +
                                    " (TypeUInt4) and " + names.since + " (TypeTimestamp)");
}

}  // namespace qzlog
