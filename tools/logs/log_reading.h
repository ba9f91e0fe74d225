#ifndef QZLOG_TOOLS_LOGS_LOG_READING_H
#define QZLOG_TOOLS_LOGS_LOG_READING_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/logs/log_input.h"
#include "tools/system/buffered_output.h"

namespace qzlog_tool {

/// What is done with logs that are read to their ends.
struct LogReading {
  BufferedOutput& output;            ///< written out before more input is waited for
  qz_LOG_LineErrorHandler& handler;  ///< of the readers
  /// Takes the lines of a file. What the reader's source throws has to go on.
  std::function<void(qz_LOG_EntryReader& reader)> read;
  /// Told why something cannot be read, or no further.
  std::function<void(const std::string& reason)> fail;
  /// Nothing more is wanted: other files are not opened.
  std::function<bool()> is_complete = [] { return false; };
  /// Takes a file's bytes where it is set, instead of `read`. What reading throws has to go on.
  std::function<void(LogInput& input)> read_bytes = nullptr;
};

/// Opens a file, or standard input ("-"). Null where it is gone and `may_be_gone`. Throws UnreadableInput.
std::unique_ptr<LogInput> open_log(const std::string& path, bool may_be_gone, BufferedOutput& output);

/// Reads one file, or standard input ("-"). False when it cannot be opened or read; one that `may_be_gone` is no
/// failure when it is.
bool read_log(const std::string& path, bool may_be_gone, const LogReading& reading);

/// Reads what operands of the command stand for (input_files), one after the other. False when not all of it could be
/// read.
bool read_logs(const std::vector<std::string>& operands, const LogReading& reading);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_LOG_READING_H
