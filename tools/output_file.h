#ifndef QZLOG_TOOLS_OUTPUT_FILE_H
#define QZLOG_TOOLS_OUTPUT_FILE_H

#include <string>
#include <string_view>

namespace qzlog_tool {

/// Makes `content` the content of a file, of standard output for "-". A file that holds it already is left alone; any
/// other is replaced in one step, so that a reader never sees half of it, and keeps its permissions. What is no regular
/// file (a pipe, a device) is written to as it is. Throws CommandError (cannot run); a regular file is then as it was.
void write_file(const std::string& path, std::string_view content);

/// Throws CommandError (cannot run) when both are one file: a slip of the keyboard must not cost the author the source.
/// `input` may be empty or "-".
void refuse_overwriting(const std::string& input, const std::string& output);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OUTPUT_FILE_H
