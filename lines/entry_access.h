#ifndef QZLOG_LINES_ENTRY_ACCESS_H
#define QZLOG_LINES_ENTRY_ACCESS_H

#include "entry/logentry_i.h"
#include "qzlog/logentry.h"

namespace qzlog {

/// The implementation behind an entry, for what its facade has no member for.
struct EntryAccess {
  static _qz_LOG_log_entry_imp& of(qz_LOG_LogEntry& entry) { return *entry.implementation_; }
  static const _qz_LOG_log_entry_imp& of(const qz_LOG_LogEntry& entry) { return *entry.implementation_; }
};

}  // namespace qzlog

#endif  // QZLOG_LINES_ENTRY_ACCESS_H
