#include "tools/system/buffered_output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/compiler/text/text_scan.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kFlushBytes = std::size_t{64} << 10;
constexpr std::string_view kLineBreaks = "\n\r";

}  // namespace

BufferedOutput::BufferedOutput(int descriptor, std::string name, TextBytes bytes)
    : descriptor_(descriptor),
      name_(std::move(name)),
      bytes_(bytes),
      is_escaped_(is_escaped(descriptor)),
      flush_bytes_(kFlushBytes) {
  held_.reserve(2 * kFlushBytes);
}

BufferedOutput::BufferedOutput(TextBytes bytes, bool is_escaped)
    : descriptor_(-1), bytes_(bytes), is_escaped_(is_escaped), flush_bytes_(std::string().max_size()) {}

// Inline, both: a call for each line shows.
inline void BufferedOutput::append(std::string_view text) {
  if (is_escaped_) {
    append_terminal_text(text, held_, bytes_);
  } else {
    held_.append(text);
  }
}

inline void BufferedOutput::flush_when_full() {
  if (held_.size() >= flush_bytes_) flush();
}

void BufferedOutput::write_line(std::string_view text) {
  if (qzlog_compiler::has_line_break(text)) {
    append_without_line_breaks(text);
  } else {
    append(text);
  }
  held_.push_back('\n');
  flush_when_full();
}

void BufferedOutput::write_lines(std::string_view lines) {
  append(lines);
  flush_when_full();
}

void BufferedOutput::write_lines(std::string_view lines, std::size_t coloured_bytes, std::string_view colour,
                                 std::string_view end) {
  held_.append(colour);
  append(lines.substr(0, coloured_bytes));
  held_.append(end);
  append(lines.substr(coloured_bytes));
  flush_when_full();
}

// What is much is not copied.
void BufferedOutput::write_laid_out(std::string_view lines) {
  if (lines.size() < flush_bytes_) {
    held_.append(lines);
    return flush_when_full();
  }
  flush();
  write(lines);
}

void BufferedOutput::take(std::string& lines) {
  lines.clear();
  held_.swap(lines);
}

void BufferedOutput::append_without_line_breaks(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t line_break = std::min(text.find_first_of(kLineBreaks, at), text.size());
    append(text.substr(at, line_break - at));
    if (line_break < text.size()) held_.append(text[line_break] == '\n' ? "\\n" : "\\r");
    at = line_break + 1;
  }
}

void BufferedOutput::flush() {
  before_flush_();
  write(held_);
  held_.clear();
}

void BufferedOutput::write(std::string_view lines) {
  const int failure = write_all(descriptor_, lines.data(), lines.size());
  if (failure == 0) return;
  held_.clear();
  if (failure == EPIPE) throw CommandError(kExitReaderGone, "");
  throw CommandError(kExitCannotRun, "cannot write to " + name_ + ": " + std::strerror(failure));
}

}  // namespace qzlog_tool
