#ifndef QZLOG_TOOLS_SYSTEM_OUTPUT_FILE_H
#define QZLOG_TOOLS_SYSTEM_OUTPUT_FILE_H

#include <span>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// A result on its way to a file. The content stays the caller's.
struct OutputFile {
  std::string path;
  std::string_view content;
};

/// Makes each content that of its file, of standard output for "-". Files are replaced when all of them are complete
/// and on the disk, each in one step: a reader never sees half of one, and after a failure, a signal or a crash each is
/// either as it was or as it should be. They keep their permissions, but not set-user-ID and set-group-ID. A file that
/// holds its content already is left alone. Links are followed, also to a file that does not exist. What is no regular
/// file (a pipe, a device, /dev/stdout and other descriptors of the process) is written to as it is, before any file is
/// replaced; a file without a name, of which another process has a descriptor, is overwritten. Signals that end the
/// process wait while files are replaced. Throws CommandError (cannot run).
void write_files(std::span<const OutputFile> outputs);

/// The same for one.
void write_file(const std::string& path, std::string_view content);

/// Whether the path stands for an open file of this process: "-", /dev/stdin, /dev/fd/N or a link to one of them.
bool names_descriptor(const std::string& path);

/// Whether both paths lead to one file, also to one that does not exist.
bool same_file(const std::string& path, const std::string& other);

/// Throws CommandError (cannot run) when both are one file: a slip of the keyboard must not cost the author the source.
/// `input` may be empty or "-".
void refuse_overwriting(const std::string& input, const std::string& output);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_OUTPUT_FILE_H
