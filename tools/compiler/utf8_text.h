#ifndef QZLOG_TOOLS_COMPILER_UTF8_TEXT_H
#define QZLOG_TOOLS_COMPILER_UTF8_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog_compiler {

/// One decoded character. `size` is 0 where the bytes are not well-formed UTF-8 (overlong forms and surrogates
/// included) or the text has ended.
struct Utf8Character {
  char32_t code = 0;
  std::size_t size = 0;
};

Utf8Character decode_utf8(std::string_view text, std::size_t offset);

/// Whether all of the text is well-formed.
bool is_utf8(std::string_view text);

/// The bytes that UTF-8 needs for a code point.
std::size_t utf8_size(char32_t code);

/// The UTF-16 units of well-formed UTF-8.
std::size_t utf16_length(std::string_view text);

/// A text that is safe to show on a terminal: control characters as escapes, other bytes as they are.
std::string printable(std::string_view text);

/// A text for a diagnostic: in single quotes, control characters as escapes, a long text cut with "..." at its end.
std::string quoted(std::string_view text);
/// Keep a `std::string` from finding `std::quoted` instead.
inline std::string quoted(const std::string& text) { return quoted(std::string_view(text)); }
inline std::string quoted(const char* text) { return quoted(std::string_view(text)); }

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_UTF8_TEXT_H
