#ifndef QZLOG_TOOLS_MERGE_DEFINITION_OPTIONS_H
#define QZLOG_TOOLS_MERGE_DEFINITION_OPTIONS_H

#include <vector>

#include "tools/merge/definition_sets.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds --definitions and --aux, each of which may be given several times: an --aux belongs to the --definitions before
/// it, one before all of them to the first. `paths`, which has to outlive the parsing, is complete when the command's
/// callback runs; a second --aux of the same --definitions is an error of usage.
void add_definition_options(CLI::App& command, std::vector<DefinitionPaths>& paths);

/// All files of the command line, for refuse_repeated_standard_input.
std::vector<std::string> files_of(const std::vector<DefinitionPaths>& paths);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MERGE_DEFINITION_OPTIONS_H
