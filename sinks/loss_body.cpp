#include "sinks/loss_body.h"

#include <algorithm>

#include "lines/line_writer.h"
#include "qzlog/logentry.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

constexpr unsigned kHighestLevel = 9;

struct LostAttribute {
  const char* name;
  qz_AttributeType type;
};
constexpr LostAttribute kLostAttributes[] = {
    {"LostId", TypeUInt4}, {"LostLevel", TypeUInt1}, {"LostCount", TypeUInt4}, {"LostSince", TypeTimestamp}};

void append_entry(const LossTable::Row& row, unsigned lost_event_id, std::string& out) {
  qz_LOG_LogEntry entry(lost_event_id, std::min(row.level, kHighestLevel));
  entry.AddAttrib4u("LostId", row.id);
  entry.AddAttrib1u("LostLevel", static_cast<unsigned char>(row.level));
  entry.AddAttrib4u("LostCount", row.count);
  entry.AddAttribTime("LostSince", qz_Time::from_unix_seconds(row.since.tv_sec));
  append_entry_body(entry, false, 0, out);
}

bool has_lost_attributes(const qz_LOG_LogEntry& entry) {
  return std::all_of(std::begin(kLostAttributes), std::end(kLostAttributes), [&](const LostAttribute& attribute) {
    qz_AttributeType type = TypeUnknown;
    return entry.CheckAttribute(attribute.name, type) >= 0 && type == attribute.type;
  });
}

}  // namespace

std::vector<LossBody> loss_bodies(const LossTable& losses, unsigned lost_event_id, std::size_t room_before) {
  const std::vector<LossTable::Row> rows = losses.rows();
  std::vector<LossBody> bodies;
  if (rows.empty()) return bodies;
  if (lost_event_id == 0) {
    bodies.push_back({std::string(room_before, ' '), rows});
    append_told_body(ToldOf::kLost, rows, bodies.back().text);
    return bodies;
  }
  for (const LossTable::Row& row : rows) {
    bodies.push_back({std::string(room_before, ' '), {row}});
    append_entry(row, lost_event_id, bodies.back().text);
  }
  return bodies;
}

void check_lost_event(unsigned lost_event_id) {
  bool fits = false;
  try {
    fits = has_lost_attributes(qz_LOG_LogEntry(lost_event_id, 0));
  } catch (const QZX_logging_entry_type_not_found&) {
    fits = false;
  }
  if (fits) return;
  const std::string text = "lost_event_id: the event " + std::to_string(lost_event_id) +
                           " is not defined with LostId (TypeUInt4), LostLevel (TypeUInt1), LostCount (TypeUInt4) "
                           "and LostSince (TypeTimestamp)";
  throw QZX_logging_illegal_argument(text.c_str(), 0);
}

}  // namespace qzlog
