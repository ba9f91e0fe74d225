#ifndef QZLOG_TOOLS_LOGS_LINE_KIND_H
#define QZLOG_TOOLS_LOGS_LINE_KIND_H

#include "qzlog/entry_lines.h"

namespace qzlog_tool {

/// Whether a line has an entry. Of one that tells of entries that were lost or held back, its entry means nothing.
inline bool is_entry(const qz_LOG_EntryLine& line) { return !line.IsLoss() && !line.IsHeld(); }

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_LINE_KIND_H
