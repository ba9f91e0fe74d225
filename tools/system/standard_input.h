#ifndef QZLOG_TOOLS_SYSTEM_STANDARD_INPUT_H
#define QZLOG_TOOLS_SYSTEM_STANDARD_INPUT_H

#include <string>
#include <vector>

namespace qzlog_tool {

/// For all the paths that a command reads, before it reads one of them: throws CommandError (cannot run) where more
/// than one is standard input ("-"), which can be read once.
void refuse_repeated_standard_input(const std::vector<std::string>& paths);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_STANDARD_INPUT_H
