#ifndef QZLOG_SINKS_TOLD_EVENT_H
#define QZLOG_SINKS_TOLD_EVENT_H

#include "qzlog/logentry.h"
#include "sinks/loss_table.h"

namespace qzlog {

/// The entry of an event of the product's that tells of entries which are not there. Throws what making it throws.
qz_LOG_LogEntry told_entry(ToldOf kind, unsigned event_id, const LossTable::Row& row);

/// Throws QZX_logging_illegal_argument, naming the setting, unless the event has the attributes for it.
void check_told_event(ToldOf kind, unsigned event_id);

}  // namespace qzlog

#endif  // QZLOG_SINKS_TOLD_EVENT_H
