#ifndef QZLOG_TOOLS_TEMPORARY_FOLDER_H
#define QZLOG_TOOLS_TEMPORARY_FOLDER_H

#include <string>

namespace qzlog_tool {

/// Where temporary files stand: TMPDIR, or /tmp.
std::string temporary_location();

/// A folder that only this user can read, in the temporary location, removed with all that is in it when the object
/// dies.
class TemporaryFolder {
 public:
  /// Throws CommandError (cannot run) when it cannot be made.
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPORARY_FOLDER_H
