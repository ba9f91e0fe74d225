#ifndef QZLOG_SINKS_SHOWN_MESSAGE_H
#define QZLOG_SINKS_SHOWN_MESSAGE_H

#include <string>

#include "lines/entry_marks.h"
#include "lines/line_writer.h"
#include "qzlog/logentry.h"
#include "sinks/loss_table.h"

namespace qzlog {

/// Appends the message of an entry as one line, as append_message_line does, without what of it lines may not show.
/// `room` is memory to use again. False when it cannot be rendered, which the line then says.
bool append_shown_message(const qz_LOG_LogEntry& entry, const EntryMarks& marks, const MessageChoice& choice,
                          std::string& room, std::string& out);

/// "12 entries of event 1001, level 3, were lost since 2026-11-21T08:15:30Z". std::bad_alloc.
std::string told_message(ToldOf kind, const LossTable::Row& row);

}  // namespace qzlog

#endif  // QZLOG_SINKS_SHOWN_MESSAGE_H
