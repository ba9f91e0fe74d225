#ifndef QZLOG_TOOLS_COUNT_MERGE_COUNTS_H
#define QZLOG_TOOLS_COUNT_MERGE_COUNTS_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds `count merge`: batches to a counter.
void add_merge_counts(CLI::App& count_command, int& exit_status);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_MERGE_COUNTS_H
