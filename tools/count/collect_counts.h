#ifndef QZLOG_TOOLS_COUNT_COLLECT_COUNTS_H
#define QZLOG_TOOLS_COUNT_COLLECT_COUNTS_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `count collect`: entries of a receiver to batches.
void add_collect_counts(CLI::App& count_command, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COLLECT_COUNTS_H
