#ifndef QZLOG_TOOLS_COUNT_COUNT_COMMAND_H
#define QZLOG_TOOLS_COUNT_COUNT_COMMAND_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `qzlog count` with `show`, `add`, `set` and `delete`: what counter files hold, and changes to them. Runs while
/// `app` parses and stores its exit status in `exit_status`, which has to outlive `app`.
void add_count_command(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COUNT_COMMAND_H
