#ifndef QZLOG_TOOLS_COMPILE_DEPENDENCY_FILE_H
#define QZLOG_TOOLS_COMPILE_DEPENDENCY_FILE_H

#include <string>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// The rule of a make dependency file: `target: inputs`, names written so that make and ninja read them as they are.
/// Throws CommandError (cannot run) for a name with a line break, which no such file can hold.
std::string dependency_rule(std::string_view target, const std::vector<std::string>& inputs);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COMPILE_DEPENDENCY_FILE_H
