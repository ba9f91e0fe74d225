#ifndef QZLOG_TOOLS_MANUAL_ZSH_COMPLETION_H
#define QZLOG_TOOLS_MANUAL_ZSH_COMPLETION_H

#include <string>

#include "tools/manual/command_tree.h"

namespace qzlog_tool {

/// The script that completes the command line in zsh: subcommands, options and their values.
std::string zsh_completion(const CommandNode& root);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_ZSH_COMPLETION_H
