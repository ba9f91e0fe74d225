#ifndef QZLOG_SINKS_SHOWN_ENTRY_H
#define QZLOG_SINKS_SHOWN_ENTRY_H

#include "lines/entry_marks.h"
#include "qzlog/logentry.h"

namespace qzlog {

/// A copy of an entry whose sensitive attributes are as lines may show them, for its message: dropped ones are not set,
/// of hashed texts there is the digest. What cannot be hashed, or not be stored, is dropped. Throws what copying an
/// entry throws, and std::bad_alloc.
qz_LOG_LogEntry shown_copy(const qz_LOG_LogEntry& entry, const EntryMarks& marks);

}  // namespace qzlog

#endif  // QZLOG_SINKS_SHOWN_ENTRY_H
