#ifndef QZLOG_TOOLS_SYSTEM_BUFFERED_OUTPUT_H
#define QZLOG_TOOLS_SYSTEM_BUFFERED_OUTPUT_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/system/terminal_text.h"

namespace qzlog_tool {

/// Lines on their way to a file descriptor. What is still held when the object dies is lost: call `flush`, whose
/// failures can be reported.
class BufferedOutput {
 public:
  /// `name` is for error texts ("standard output"), `bytes` what the texts consist of. The descriptor stays the
  /// caller's.
  BufferedOutput(int descriptor, std::string name, TextBytes bytes = TextBytes::kUtf8);
  /// Keeps everything in memory, laid out as it would be there, until `take`. Not to be flushed.
  BufferedOutput(TextBytes bytes, bool is_escaped);
  BufferedOutput(const BufferedOutput&) = delete;
  BufferedOutput& operator=(const BufferedOutput&) = delete;

  /// `action` is called at the beginning of every flush; what it throws ends the flush, and nothing is written.
  void before_flush(std::function<void()> action) { before_flush_ = std::move(action); }

  /// Adds one line. Line feeds and carriage returns inside are written as \n and \r, two characters each. On a terminal
  /// what else would command it is escaped (append_terminal_text), here and below.
  void write_line(std::string_view text);
  /// Adds lines that are complete, with their ends.
  void write_lines(std::string_view lines);
  /// The same in a colour: `colour` and `end` are the sequences around the first `coloured_bytes` bytes, nothing for
  /// lines without.
  void write_lines(std::string_view lines, std::size_t coloured_bytes, std::string_view colour, std::string_view end);
  /// Adds lines that another object laid out for the same place.
  void write_laid_out(std::string_view lines);
  /// How many bytes are held.
  std::size_t held_bytes() const noexcept { return held_.size(); }
  /// Exchanges what is held for an empty text, whose memory serves what comes next.
  void take(std::string& lines);
  /// Throws CommandError: cannot run, with the reason; or reader gone, without a text, on a pipe that nobody reads.
  void flush();

 private:
  void append(std::string_view text);
  void append_without_line_breaks(std::string_view text);
  void flush_when_full();
  void write(std::string_view lines);

  int descriptor_;
  std::string name_;
  TextBytes bytes_;
  bool is_escaped_;
  std::size_t flush_bytes_;
  std::string held_;
  std::function<void()> before_flush_ = [] {};
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_BUFFERED_OUTPUT_H
