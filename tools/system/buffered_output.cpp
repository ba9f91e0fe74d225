#include "tools/system/buffered_output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kFlushBytes = std::size_t{64} << 10;
constexpr std::string_view kLineBreaks = "\n\r";

// Looks at every character, many at a time: most texts are short and have none.
bool has_line_break(std::string_view text) {
  unsigned char found = 0;
  for (const char character : text) {
    found |= static_cast<unsigned char>(character == '\n') | static_cast<unsigned char>(character == '\r');
  }
  return found != 0;
}

}  // namespace

BufferedOutput::BufferedOutput(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {
  held_.reserve(2 * kFlushBytes);
}

void BufferedOutput::write_line(std::string_view text) {
  if (has_line_break(text)) {
    append_escaped(text);
  } else {
    held_.append(text);
  }
  held_.push_back('\n');
  if (held_.size() >= kFlushBytes) flush();
}

void BufferedOutput::append_escaped(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t line_break = std::min(text.find_first_of(kLineBreaks, at), text.size());
    held_.append(text, at, line_break - at);
    if (line_break < text.size()) held_.append(text[line_break] == '\n' ? "\\n" : "\\r");
    at = line_break + 1;
  }
}

void BufferedOutput::flush() {
  before_flush_();
  const int failure = write_all(descriptor_, held_.data(), held_.size());
  held_.clear();
  if (failure == EPIPE) throw CommandError(kExitReaderGone, "");
  if (failure != 0) throw CommandError(kExitCannotRun, "cannot write to " + name_ + ": " + std::strerror(failure));
}

}  // namespace qzlog_tool
