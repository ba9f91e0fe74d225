#ifndef QZLOG_TOOLS_MANUAL_ROFF_BLOCKS_H
#define QZLOG_TOOLS_MANUAL_ROFF_BLOCKS_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/manual/markdown.h"

namespace qzlog_tool {

// Parts of a page in Markdown as parts of a manual page.

/// On one line.
std::string roff_spans(std::string_view text);

/// In lines of less than 80 bytes, without the last line's end.
std::string roff_paragraph(std::string_view text);

/// Headings become sections (level 2) and their parts. Tables that fit a terminal stay tables, others become lists.
std::string roff_blocks(const std::vector<MarkdownBlock>& blocks);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_ROFF_BLOCKS_H
