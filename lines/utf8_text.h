#ifndef QZLOG_LINES_UTF8_TEXT_H
#define QZLOG_LINES_UTF8_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog {

/// One decoded character. `size` is 0 where the bytes are not well-formed UTF-8 (overlong forms and surrogates
/// included) or the text has ended.
struct Utf8Character {
  char32_t code = 0;
  std::size_t size = 0;
};

Utf8Character decode_utf8(std::string_view text, std::size_t offset);

/// A file's text without the mark that some editors put before it.
inline std::string_view without_byte_order_mark(std::string_view text) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
}

/// Whether all of the text is well-formed.
bool is_utf8_text(std::string_view text);

/// The bytes that UTF-8 needs for a code point.
std::size_t utf8_size(char32_t code);

/// The UTF-16 units of well-formed UTF-8.
std::size_t utf16_length(std::string_view text);

/// What YAML counts as the end of a line; a line feed behind a carriage return belongs to it.
constexpr bool is_line_break(char32_t code) {
  return code == '\n' || code == '\r' || code == 0x85 || code == 0x2028 || code == 0x2029;
}

/// Whether a byte is a character of ASCII that a terminal shows in one column, as most are.
constexpr bool is_plain(char byte) { return byte >= ' ' && byte <= '~'; }

/// Appends the character at `offset` as it is safe to show on a terminal and returns the bytes that it takes in the
/// text. Control characters, those that turn the direction of writing included, become escapes, what is not UTF-8 the
/// replacement character.
std::size_t append_printable(std::string& out, std::string_view text, std::size_t offset);

/// A text that is safe to show on a terminal: control characters as escapes, other bytes as they are.
std::string printable(std::string_view text);

/// A text for a diagnostic: in single quotes, control characters as escapes, a long text cut with "..." at its end.
std::string quoted(std::string_view text);
/// Keep a `std::string` from finding `std::quoted` instead.
inline std::string quoted(const std::string& text) { return quoted(std::string_view(text)); }
inline std::string quoted(const char* text) { return quoted(std::string_view(text)); }

}  // namespace qzlog

#endif  // QZLOG_LINES_UTF8_TEXT_H
