#include "tools/system/terminal_text.h"

#include <unistd.h>

#include <cstddef>
#include <iostream>
#include <streambuf>

#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::decode_utf8;
using qzlog_compiler::is_plain;
using qzlog_compiler::Utf8Character;

bool raw_texts_are_wanted = false;  // of the process, which has one thread

bool is_raw(int descriptor) { return descriptor == STDOUT_FILENO && raw_texts_are_wanted; }

bool is_line_end_or_tab(std::string_view text, std::size_t offset) {
  const char byte = text[offset];
  return byte == '\n' || byte == '\t' || (byte == '\r' && text.substr(offset + 1, 1) == "\n");
}

constexpr bool is_direction_mark(char32_t code) { return code == 0x061C || code == 0x200E || code == 0x200F; }

/// Returns the bytes that the character takes in the text.
std::size_t append_character(std::string_view text, std::size_t offset, std::string& out) {
  const Utf8Character character = decode_utf8(text, offset);
  if (!is_direction_mark(character.code)) return qzlog_compiler::append_printable(out, text, offset);
  out.append(text, offset, character.size);
  return character.size;
}

std::size_t append_byte(char character, std::string& out) {
  const auto byte = static_cast<unsigned char>(character);
  if (byte >= 0xA0) {
    out += character;
  } else {
    out.append("\\x") += "0123456789ABCDEF"[byte >> 4];
    out += "0123456789ABCDEF"[byte & 15];
  }
  return 1;
}

/// How many bytes at the end of the text are the beginning of a character, of which more may come.
std::size_t unfinished_bytes(std::string_view text) {
  constexpr std::size_t kMostBytes = 4;
  for (std::size_t count = 1; count < kMostBytes && count <= text.size(); ++count) {
    const auto byte = static_cast<unsigned char>(text[text.size() - count]);
    if (byte == '\r' && count == 1) return 1;
    if (byte < 0x80) return 0;
    if (byte < 0xC0) continue;
    const std::size_t size = byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    return count < size ? count : 0;
  }
  return 0;
}

}  // namespace

bool is_escaped(int descriptor) { return !is_raw(descriptor) && ::isatty(descriptor) == 1; }

void want_raw_texts() noexcept { raw_texts_are_wanted = true; }

std::string shown_value(std::string_view text) {
  return raw_texts_are_wanted ? std::string(text) : qzlog_compiler::printable(text);
}

void append_terminal_text(std::string_view text, std::string& out, TextBytes bytes) {
  for (std::size_t offset = 0; offset < text.size();) {
    std::size_t end = offset;
    while (end < text.size() && (is_plain(text[end]) || is_line_end_or_tab(text, end))) ++end;
    out.append(text, offset, end - offset);
    if (end == text.size()) return;
    offset = end + (bytes == TextBytes::kUtf8 ? append_character(text, end, out) : append_byte(text[end], out));
  }
}

/// What is written is held back only as long as a character may not be complete.
class TerminalGuard::Buffer : public std::streambuf {
 public:
  Buffer(std::streambuf& target, int descriptor) : target_(target), descriptor_(descriptor) {}

  void write_as_it_is(std::string_view text) {
    release();
    put(text);
  }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    held_.append(text, static_cast<std::size_t>(size));
    const std::size_t rest = unfinished_bytes(held_);
    return write(held_.size() - rest) ? size : 0;
  }
  int_type overflow(int_type character) override {
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    const char byte = traits_type::to_char_type(character);
    return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
  }
  int sync() override { return release() && target_.pubsync() == 0 ? 0 : -1; }

 private:
  bool release() { return held_.empty() || write(held_.size()); }

  /// The first bytes of what is held.
  bool write(std::size_t size) {
    const std::string_view text = std::string_view(held_).substr(0, size);
    bool is_written = false;
    if (!is_raw(descriptor_)) {
      escaped_.clear();
      append_terminal_text(text, escaped_);
      is_written = put(escaped_);
    } else {
      is_written = put(text);
    }
    held_.erase(0, size);
    return is_written;
  }
  bool put(std::string_view text) {
    const auto size = static_cast<std::streamsize>(text.size());
    return target_.sputn(text.data(), size) == size;
  }

  std::streambuf& target_;
  int descriptor_;
  std::string held_;
  std::string escaped_;
};

/// A stream whose buffer is replaced.
class TerminalGuard::Guarded {
 public:
  Guarded(std::ostream& stream, int descriptor) : stream_(stream), own_(*stream.rdbuf()), buffer_(own_, descriptor) {
    stream_.rdbuf(&buffer_);
  }
  ~Guarded() {
    buffer_.pubsync();
    stream_.rdbuf(&own_);
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

 private:
  std::ostream& stream_;
  std::streambuf& own_;
  Buffer buffer_;
};

TerminalGuard::TerminalGuard() {
  if (::isatty(STDOUT_FILENO) == 1) output_ = std::make_unique<Guarded>(std::cout, STDOUT_FILENO);
  if (::isatty(STDERR_FILENO) == 1) errors_ = std::make_unique<Guarded>(std::cerr, STDERR_FILENO);
}

TerminalGuard::~TerminalGuard() = default;

void write_as_it_is(std::ostream& out, std::string_view text) {
  if (auto* const buffer = dynamic_cast<TerminalGuard::Buffer*>(out.rdbuf())) {
    buffer->write_as_it_is(text);
    if ((out.flags() & std::ios_base::unitbuf) != 0) out.flush();
  } else {
    out << text;
  }
}

}  // namespace qzlog_tool
