#ifndef QZLOG_SINKS_HELD_LINES_H
#define QZLOG_SINKS_HELD_LINES_H

#include <cstddef>
#include <vector>

#include "qzlog/sink.h"
#include "sinks/loss_table.h"

namespace qzlog {

/// What a sink is told by TellHeld, as rows, and back. std::bad_alloc.
std::vector<LossTable::Row> rows_of(const qz_LOG_HeldEntries* held, std::size_t count);
std::vector<qz_LOG_HeldEntries> held_of(const std::vector<LossTable::Row>& rows);

/// The entry of an event of the product's that tells of what was held back. Throws what making it throws.
qz_LOG_LogEntry held_entry(unsigned held_event_id, const LossTable::Row& row);

/// Throws QZX_logging_illegal_argument, naming the setting, unless the event has the attributes for it.
void check_held_event(unsigned held_event_id);

}  // namespace qzlog

#endif  // QZLOG_SINKS_HELD_LINES_H
