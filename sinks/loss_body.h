#ifndef QZLOG_SINKS_LOSS_BODY_H
#define QZLOG_SINKS_LOSS_BODY_H

#include <cstddef>
#include <string>
#include <vector>

#include "sinks/loss_table.h"

namespace qzlog {

/// The body of a line that tells of losses, behind `room_before` bytes, and the rows that it tells of.
struct LossBody {
  std::string text;
  std::vector<LossTable::Row> rows;
};

/// All that is to be told: in one line, or with an event in an entry for each row. std::bad_alloc, and what making the
/// entry throws.
std::vector<LossBody> loss_bodies(const LossTable& losses, unsigned lost_event_id, std::size_t room_before);

}  // namespace qzlog

#endif  // QZLOG_SINKS_LOSS_BODY_H
