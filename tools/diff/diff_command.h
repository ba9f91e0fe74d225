#ifndef QZLOG_TOOLS_DIFF_DIFF_COMMAND_H
#define QZLOG_TOOLS_DIFF_DIFF_COMMAND_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `qzlog diff` to the command line. It runs while the command line is parsed and leaves its exit status.
void add_diff_command(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DIFF_DIFF_COMMAND_H
