#ifndef QZLOG_TOOLS_COMPILE_COMPILE_COMMAND_H
#define QZLOG_TOOLS_COMPILE_COMPILE_COMMAND_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds the subcommand `compile`. When it runs it sets `exit_status`: 0 for success, 1 when the source has errors, 2
/// when a file cannot be read or written. `exit_status` has to outlive `app`.
void add_compile_command(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COMPILE_COMPILE_COMMAND_H
