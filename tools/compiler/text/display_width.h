#ifndef QZLOG_TOOLS_COMPILER_TEXT_DISPLAY_WIDTH_H
#define QZLOG_TOOLS_COMPILER_TEXT_DISPLAY_WIDTH_H

#include <cstddef>
#include <string_view>

namespace qzlog_compiler {

/// The columns that a terminal takes for a text without control characters: two for East Asian wide characters, none
/// for combining ones. `text` is well-formed UTF-8.
std::size_t display_width(std::string_view text);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_DISPLAY_WIDTH_H
