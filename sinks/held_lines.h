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

}  // namespace qzlog

#endif  // QZLOG_SINKS_HELD_LINES_H
