#ifndef QZLOG_TOOLS_COMMANDS_H
#define QZLOG_TOOLS_COMMANDS_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// "1.0.0".
extern const char* const kVersionNumber;

/// Gives `app`, which is called "qzlog", everything that the command line takes. The subcommands come from one table;
/// the command itself, its manual pages and its completions are all made from what this gives. A subcommand runs while
/// `app` parses and stores its exit status in `exit_status`, which has to outlive `app`.
void add_commands(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COMMANDS_H
