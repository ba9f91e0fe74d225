#ifndef QZLOG_TOOLS_EXPLAIN_EXPLAIN_COMMAND_H
#define QZLOG_TOOLS_EXPLAIN_EXPLAIN_COMMAND_H

#include "tools/report/known_rule.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `qzlog explain` to the command line. Its exit status is left in `exit_status`; `rules` are those that it
/// explains.
void add_explain_command(CLI::App& app, int& exit_status, qzlog_compiler::RuleList rules);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_EXPLAIN_EXPLAIN_COMMAND_H
