#ifndef QZLOG_MESSAGE_LOGMSG_RENDER_H
#define QZLOG_MESSAGE_LOGMSG_RENDER_H

#include "qzlog/qz_time.h"

class _qz_LOG_log_entry_imp;

namespace qzlog {

/// The time of a reference: the entry's own, on the local clock, for "TIMESTAMP". Both paths of rendering show it so.
qz_Time referenced_time(const _qz_LOG_log_entry_imp& entry, const char* name);

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_LOGMSG_RENDER_H
