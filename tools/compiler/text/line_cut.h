#ifndef QZLOG_TOOLS_COMPILER_TEXT_LINE_CUT_H
#define QZLOG_TOOLS_COMPILER_TEXT_LINE_CUT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qzlog_compiler {

/// Characters; `text` is UTF-8.
std::size_t character_count(std::string_view text);

/// The columns of a terminal that a text takes (display_width); one for each byte that is not UTF-8.
std::size_t column_count(std::string_view text);

/// What takes at most `columns` columns of a terminal, with an ellipsis at the end where something is cut; 0 for all.
std::string cut_line(std::string text, std::size_t columns);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_LINE_CUT_H
