#ifndef QZLOG_TOOLS_STATS_STATS_COMMAND_H
#define QZLOG_TOOLS_STATS_STATS_COMMAND_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `qzlog stats`: entries counted by what they have in common. Runs while the command line is parsed and stores
/// its exit status in `exit_status`, which has to outlive the parsing.
void add_stats_command(CLI::App& app, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_STATS_STATS_COMMAND_H
