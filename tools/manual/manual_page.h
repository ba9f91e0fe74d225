#ifndef QZLOG_TOOLS_MANUAL_MANUAL_PAGE_H
#define QZLOG_TOOLS_MANUAL_MANUAL_PAGE_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/manual/command_tree.h"

namespace qzlog_tool {

/// "qzlog-count-show.1" for the command "qzlog count show".
std::string manual_page_file_name(const CommandNode& command);

/// The manual page of one of the commands below `root` (or of `root`) in man(7) macros, made from its help page. There
/// is no date in it.
std::string manual_page(const CommandNode& root, const CommandNode& command, std::string_view version);

/// A text that roff shows as it stands, in a paragraph: minus signs, quotes and backslashes included.
std::string roff_text(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_MANUAL_PAGE_H
