#ifndef QZLOG_TOOLS_MANUAL_ROFF_H
#define QZLOG_TOOLS_MANUAL_ROFF_H

#include <string>
#include <string_view>

namespace qzlog_tool {

// Parts of manual pages, in man(7) macros. Texts are UTF-8; what is made of them is ASCII.

/// A text that roff shows as it stands, line for line: minus signs, quotes and backslashes included.
std::string roff_text(std::string_view text);

/// The same of a part of a line, before which something may stand.
std::string roff_part(std::string_view text);

/// Small letters of ASCII as capitals, others as they are.
std::string in_capitals(std::string_view text);

std::string roff_bold(std::string_view text);
std::string roff_italic(std::string_view text);

/// What the functions above have made, its words in lines of less than 80 bytes, without the last line's end.
std::string roff_filled(std::string_view roff);

/// A text, filled, that ends with a full stop.
std::string roff_sentence(std::string_view text);

/// Lines that stay as they are, indented.
std::string roff_literal(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_ROFF_H
