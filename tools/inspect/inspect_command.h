#ifndef QZLOG_TOOLS_INSPECT_INSPECT_COMMAND_H
#define QZLOG_TOOLS_INSPECT_INSPECT_COMMAND_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds the subcommand `inspect`. When it runs it sets `exit_status`: 0 for success, 1 when the file is damaged or has
/// no definition source, 2 when it cannot be read. `exit_status` has to outlive `app`.
void add_inspect_command(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_INSPECT_INSPECT_COMMAND_H
