#ifndef QZLOG_TOOLS_COMMAND_LINE_H
#define QZLOG_TOOLS_COMMAND_LINE_H

#include <string>
#include <vector>

#include "tools/manual/command_tree.h"

namespace qzlog_tool {

/// "1.0.0".
extern const char* const kVersionNumber;

/// Does what `qzlog` does when it is called with `arguments`, and returns its exit status. What goes wrong is said on
/// stderr; nothing is thrown.
int run_command_line(const std::vector<std::string>& arguments);

/// Everything that the command line takes. The command itself, its manual pages and its completions are all made from
/// the table that this shows.
CommandNode command_line_tree();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COMMAND_LINE_H
