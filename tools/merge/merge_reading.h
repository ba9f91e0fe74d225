#ifndef QZLOG_TOOLS_MERGE_MERGE_READING_H
#define QZLOG_TOOLS_MERGE_MERGE_READING_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"

namespace qzlog_tool {

/// How the files of several inputs are read by turns.
struct MergeReading {
  /// Opens one, or standard input ("-"). Null where it is gone and may be; throws UnreadableInput.
  std::function<std::unique_ptr<qz_LOG_ByteSource>(const std::string& path, bool may_be_gone)> open;
  /// Told why one cannot be read, or no further.
  std::function<void(const std::string& reason)> fail;
  /// Of the readers; may be null.
  qz_LOG_LineErrorHandler* handler = nullptr;
  /// Decides on lines; null takes all. Asked once or twice for each, ahead of its turn: it has to say the same again.
  qz_LOG_LineChoice* choice = nullptr;
  /// Called with each line right before it is read; may be empty.
  std::function<void(std::string_view line)> before_line = {};
  /// What lines that are passed over are read into.
  qz_LOG_EntryLine& nothing;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MERGE_MERGE_READING_H
