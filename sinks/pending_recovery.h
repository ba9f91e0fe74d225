#ifndef QZLOG_SINKS_PENDING_RECOVERY_H
#define QZLOG_SINKS_PENDING_RECOVERY_H

#include <string>

#include "sinks/log_destination.h"

namespace qzlog {

struct RecoveredLines {
  unsigned long long lines = 0;          ///< that were written to the log
  unsigned long long damaged_bytes = 0;  ///< that were no whole lines of their writer
};

/// Where a process keeps pending lines, beside the log.
std::string pending_path(const LogDestination& destination, long process, unsigned long long start);

/// Writes to the log what ended processes have left in their pending files, and deletes these. A file that could not be
/// written to the end stays for the next time. std::bad_alloc.
RecoveredLines recover_pending(LogDestination& destination);

}  // namespace qzlog

#endif  // QZLOG_SINKS_PENDING_RECOVERY_H
