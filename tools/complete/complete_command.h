#ifndef QZLOG_TOOLS_COMPLETE_COMPLETE_COMMAND_H
#define QZLOG_TOOLS_COMPLETE_COMPLETE_COMMAND_H

#include "tools/report/known_rule.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `qzlog complete`, which the completions of shells call and no help page shows: the names that definitions have,
/// or those of `rules`, one per line. When the command line asks for it, it runs while `app` parses and stores its exit
/// status in `exit_status`, which has to outlive `app`.
void add_complete_command(CLI::App& app, int& exit_status, qzlog_compiler::RuleList rules);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COMPLETE_COMPLETE_COMMAND_H
