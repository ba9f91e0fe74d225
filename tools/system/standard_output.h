#ifndef QZLOG_TOOLS_SYSTEM_STANDARD_OUTPUT_H
#define QZLOG_TOOLS_SYSTEM_STANDARD_OUTPUT_H

namespace qzlog_tool {

/// Writes out what std::cout holds. Throws CommandError when not everything that it ever got has arrived: cannot run,
/// with the reason; or reader gone, without a text, on a pipe that nobody reads.
void flush_standard_output();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_STANDARD_OUTPUT_H
