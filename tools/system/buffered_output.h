#ifndef QZLOG_TOOLS_SYSTEM_BUFFERED_OUTPUT_H
#define QZLOG_TOOLS_SYSTEM_BUFFERED_OUTPUT_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace qzlog_tool {

/// Lines on their way to a file descriptor. What is still held when the object dies is lost: call `flush`, whose
/// failures can be reported.
class BufferedOutput {
 public:
  /// `name` is for error texts ("standard output"). The descriptor stays the caller's.
  BufferedOutput(int descriptor, std::string name);
  BufferedOutput(const BufferedOutput&) = delete;
  BufferedOutput& operator=(const BufferedOutput&) = delete;

  /// `action` is called at the beginning of every flush; what it throws ends the flush, and nothing is written.
  void before_flush(std::function<void()> action) { before_flush_ = std::move(action); }

  /// Adds one line. Line feeds and carriage returns inside are written as \n and \r, two characters each.
  void write_line(std::string_view text);
  /// Throws CommandError: cannot run, with the reason; or reader gone, without a text, on a pipe that nobody reads.
  void flush();

 private:
  void append_escaped(std::string_view text);

  int descriptor_;
  std::string name_;
  std::string held_;
  std::function<void()> before_flush_ = [] {};
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_BUFFERED_OUTPUT_H
