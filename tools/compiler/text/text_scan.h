#ifndef QZLOG_TOOLS_COMPILER_TEXT_TEXT_SCAN_H
#define QZLOG_TOOLS_COMPILER_TEXT_TEXT_SCAN_H

#include <string_view>

namespace qzlog_compiler {

// For texts of any bytes, of which most are short and have nothing special: every character is looked at, many at a
// time.

/// Whether a line feed or a carriage return is in the text.
bool has_line_break(std::string_view text);

/// Whether the text is made of the characters from ' ' to '~'; an empty one is.
bool is_printable_ascii(std::string_view text);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_TEXT_SCAN_H
