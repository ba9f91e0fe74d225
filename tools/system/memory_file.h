#ifndef QZLOG_TOOLS_SYSTEM_MEMORY_FILE_H
#define QZLOG_TOOLS_SYSTEM_MEMORY_FILE_H

#include <string>
#include <string_view>

#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// Bytes in memory that can be opened like a file, for what reads or writes files only. No full disk gets in its way,
/// and nothing of it is left, however the process ends.
class MemoryFile {
 public:
  /// Throws CommandError (cannot run) when there is no memory or no descriptor for it.
  explicit MemoryFile(std::string_view bytes = {});

  /// The name under which this process can open the file as long as the object lives. Throws CommandError (cannot run)
  /// where /proc, in which it stands, is not mounted.
  std::string path() const;
  int descriptor() const noexcept { return file_.get(); }

  /// Everything that the file holds now. Throws CommandError (cannot run).
  std::string content() const;
  /// Puts `bytes` in the place of the file's first ones. Throws CommandError (cannot run).
  void overwrite_beginning(std::string_view bytes);

 private:
  FileDescriptor file_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_MEMORY_FILE_H
