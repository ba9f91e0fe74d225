#ifndef QZLOG_SINKS_FILE_LINES_H
#define QZLOG_SINKS_FILE_LINES_H

#include <memory>

#include "qzlog/file_sink.h"
#include "sinks/line_destination.h"

namespace qzlog {

/// A file, or a series of files, of lines of any kind. Such lines have no number by which a later open could tell which
/// of them are in the file already: kShared is kWrite for them. With the exceptions of qz_LOG_FileSink.
std::unique_ptr<LineDestination> open_file_lines(const qz_LOG_FileSinkSettings& settings);

}  // namespace qzlog

#endif  // QZLOG_SINKS_FILE_LINES_H
