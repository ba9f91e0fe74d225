#ifndef QZLOG_TOOLS_MERGE_MERGE_INPUTS_H
#define QZLOG_TOOLS_MERGE_MERGE_INPUTS_H

#include <string>
#include <vector>

#include "tools/logs/log_inputs.h"

namespace qzlog_tool {

/// What an operand of the command stands for, as input_files has it, by writers: the files of a series, which one
/// writer began one after the other, together, each other file alone. Throws UnreadableInput as that does.
std::vector<InputFiles> merge_inputs(const std::string& operand);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MERGE_MERGE_INPUTS_H
