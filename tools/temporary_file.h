#ifndef QZLOG_TOOLS_TEMPORARY_FILE_H
#define QZLOG_TOOLS_TEMPORARY_FILE_H

#include <string>
#include <string_view>

namespace qzlog_tool {

/// A file that only this user can read, in TMPDIR or /tmp, removed when the object dies.
class TemporaryFile {
 public:
  /// Throws CommandError (cannot run) when it cannot be written.
  explicit TemporaryFile(std::string_view bytes);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPORARY_FILE_H
