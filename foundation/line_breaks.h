#ifndef QZLOG_FOUNDATION_LINE_BREAKS_H
#define QZLOG_FOUNDATION_LINE_BREAKS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qzlog {

/// Line breaks in texts that are kept in one line: line feed and carriage return stand as "\n" and "\r" there, a
/// backslash and a letter.

/// Not zero when one of eight bytes is below `limit`, which is at most 128.
constexpr std::uint64_t find_byte_below(std::uint64_t bytes, unsigned char limit) {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  return (bytes - kOnes * limit) & ~bytes & kOnes << 7;
}

/// Most texts have no control character at all, and are too short for a search routine to pay.
inline bool contains_line_break(const char* text, std::size_t length) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  const auto eight_bytes_at = [](const char* place) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, place, sizeof(bytes));
    return bytes;
  };
  if (length >= kWord) {
    std::uint64_t found = find_byte_below(eight_bytes_at(text + length - kWord), ' ');
    for (std::size_t i = 0; i + kWord < length; i += kWord) found |= find_byte_below(eight_bytes_at(text + i), ' ');
    if (found == 0) return false;
  }
  return std::any_of(text, text + length, [](char character) { return character == '\n' || character == '\r'; });
}

/// Copy a text into `size` bytes, always terminated, with its line breaks escaped or what was escaped turned back.
/// Escaping reads at most size - 1 characters; what has no room is left out.
void escape_line_breaks(const char* source, char* target, int size);
void unescape_line_breaks(const char* source, char* target, int size);

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_LINE_BREAKS_H
