#ifndef QZLOG_TOOLS_COMPILER_TEXT_LINE_CUT_H
#define QZLOG_TOOLS_COMPILER_TEXT_LINE_CUT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qzlog_compiler {

/// Characters, for aligning columns; `text` is UTF-8.
std::size_t character_count(std::string_view text);

/// At most `columns` characters, the last of them an ellipsis where something is cut; 0 for all.
std::string cut_line(std::string text, std::size_t columns);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_LINE_CUT_H
