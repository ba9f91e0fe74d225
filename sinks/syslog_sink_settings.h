#ifndef QZLOG_SINKS_SYSLOG_SINK_SETTINGS_H
#define QZLOG_SINKS_SYSLOG_SINK_SETTINGS_H

#include "qzlog/syslog_sink.h"

namespace qzlog {

/// Throws QZX_logging_illegal_argument, naming the setting, for what cannot be. std::bad_alloc.
void check_settings(const qz_LOG_SyslogSinkSettings& settings);

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_SINK_SETTINGS_H
