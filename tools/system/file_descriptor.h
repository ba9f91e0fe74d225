#ifndef QZLOG_TOOLS_SYSTEM_FILE_DESCRIPTOR_H
#define QZLOG_TOOLS_SYSTEM_FILE_DESCRIPTOR_H

#include <string>

namespace qzlog_tool {

/// Owns a file descriptor; the three standard ones are used but never closed.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor();

  int get() const noexcept { return descriptor_; }

  /// Closes it before the object dies, for what was written: a file system may say only now that it could not keep it.
  /// Returns 0 or the errno of the failure; the descriptor is gone either way.
  int close() noexcept;

 private:
  int descriptor_;
};

/// Opens a path, again when a signal interrupted it. Returns -1 with errno when it fails.
int open_path(const std::string& path, int flags, unsigned mode = 0) noexcept;

/// How a file that is read is named in texts: "-" is standard input, "<stdin>".
std::string display_name(const std::string& path);

/// Opens a file for reading; "-" is standard input. Throws CommandError (cannot run) naming the file and the reason.
FileDescriptor open_input(const std::string& path);

/// The same for what has an end and is not waited for: neither a pipe nor a device.
FileDescriptor open_regular_file(const std::string& path);

/// Reads up to `size_bytes`, again when a signal interrupted it; 0 at the end. Throws CommandError (cannot run) with
/// `file_name` and the reason.
std::size_t read_some(int descriptor, char* buffer, std::size_t size_bytes, const std::string& file_name);

/// Everything from here to the end. Throws as read_some does.
std::string read_to_end(const FileDescriptor& file, const std::string& file_name);

/// Everything that a file holds. Throws as open_input and read_some do.
std::string read_file(const std::string& path);

/// Throws CommandError (cannot run) that the file cannot be written, with the reason in `error`, an errno.
[[noreturn]] void refuse_to_write(const std::string& path, int error);

/// Writes all bytes, again after interruptions and partial writes. Returns 0 or the errno of the failure.
int write_all(int descriptor, const char* bytes, std::size_t size_bytes) noexcept;

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_FILE_DESCRIPTOR_H
