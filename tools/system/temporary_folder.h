#ifndef QZLOG_TOOLS_SYSTEM_TEMPORARY_FOLDER_H
#define QZLOG_TOOLS_SYSTEM_TEMPORARY_FOLDER_H

#include <string>
#include <string_view>

#include "tools/system/signal_delay.h"

namespace qzlog_tool {

/// A folder that only this user can read, in TMPDIR or /tmp, removed with all files in it when the object dies.
/// Signals that end the process wait until then.
class TemporaryFolder {
 public:
  /// Throws CommandError (cannot run) when it cannot be made.
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::string& path() const noexcept { return path_; }

  /// Makes a new file in the folder and returns its path. Throws CommandError (cannot run).
  std::string add_file(const std::string& name, std::string_view content) const;

 private:
  SignalDelay delay_;
  std::string path_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_TEMPORARY_FOLDER_H
