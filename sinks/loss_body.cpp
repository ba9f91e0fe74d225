#include "sinks/loss_body.h"

#include "lines/line_writer.h"
#include "sinks/told_event.h"

namespace qzlog {

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
    append_entry_body(told_entry(ToldOf::kLost, lost_event_id, row), false, 0, bodies.back().text);
  }
  return bodies;
}

}  // namespace qzlog
