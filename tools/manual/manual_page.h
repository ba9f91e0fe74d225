#ifndef QZLOG_TOOLS_MANUAL_MANUAL_PAGE_H
#define QZLOG_TOOLS_MANUAL_MANUAL_PAGE_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/manual/command_tree.h"
#include "tools/manual/environment_rows.h"

namespace qzlog_tool {

/// "qzlog-count-show.1" for the command "qzlog count show".
std::string manual_page_file_name(const CommandNode& command);

/// The manual page of one of the commands below `root` (or of `root`) in man(7) macros, made from its help page. There
/// is no date in it. `environment` are the variables of all commands.
std::string manual_page(const CommandNode& root, const CommandNode& command,
                        const std::vector<EnvironmentRow>& environment, std::string_view version);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_MANUAL_PAGE_H
