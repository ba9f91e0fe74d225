#ifndef QZLOG_TOOLS_LOGS_LOG_INPUT_H
#define QZLOG_TOOLS_LOGS_LOG_INPUT_H

#include <poll.h>

#include <string>
#include <utility>

#include "qzlog/entry_lines.h"
#include "tools/logs/unreadable_input.h"
#include "tools/system/buffered_output.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// A file of entries. What was made of the lines so far is written out before more are waited for.
class LogInput : public qz_LOG_ByteSource {
 public:
  /// `path` as open_input takes it, which `file` was opened with. `output` has to outlive this object.
  LogInput(const std::string& path, FileDescriptor file, BufferedOutput& output)
      : shown_path_(display_name(path)), file_(std::move(file)), output_(output) {}

  /// "<stdin>" for standard input.
  const std::string& shown_path() const noexcept { return shown_path_; }

  /// Reading would wait.
  bool would_wait() const noexcept {
    pollfd input = {file_.get(), POLLIN, 0};
    return ::poll(&input, 1, 0) == 0;
  }

  std::size_t Read(char* buffer, std::size_t size) override {
    output_.flush();
    try {
      return read_some(file_.get(), buffer, size, shown_path_);
    } catch (const CommandError& error) {
      throw UnreadableInput(error.what());
    }
  }

 private:
  std::string shown_path_;
  FileDescriptor file_;
  BufferedOutput& output_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_LOG_INPUT_H
