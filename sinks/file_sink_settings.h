#ifndef QZLOG_SINKS_FILE_SINK_SETTINGS_H
#define QZLOG_SINKS_FILE_SINK_SETTINGS_H

#include "qzlog/file_sink.h"

namespace qzlog {

/// Throws QZX_logging_illegal_argument, which begins with the name of the setting that cannot be.
void check_settings(const qz_LOG_FileSinkSettings& settings);

}  // namespace qzlog

#endif  // QZLOG_SINKS_FILE_SINK_SETTINGS_H
