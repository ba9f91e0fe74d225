#ifndef QZLOG_TOOLS_COUNT_COUNT_SHOW_H
#define QZLOG_TOOLS_COUNT_COUNT_SHOW_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `show` to the command `count`: the counts of a file as a table, JSON or a bar chart. Runs while the command
/// line is parsed and stores its exit status in `exit_status`, which has to outlive the parsing.
void add_count_show(CLI::App& count_command, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COUNT_SHOW_H
