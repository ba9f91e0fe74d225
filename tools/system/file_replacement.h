#ifndef QZLOG_TOOLS_SYSTEM_FILE_REPLACEMENT_H
#define QZLOG_TOOLS_SYSTEM_FILE_REPLACEMENT_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// The new content of a file, complete and on the disk in a file beside it, which is removed again unless it becomes
/// the file. Only SIGKILL and the like leave it behind, as .qzlog-0123456789abcdef.
class FileReplacement {
 public:
  /// `target` is no link. `mode`: the file's permissions; none for a new file, which gets the usual ones. Throws
  /// CommandError (cannot run) with `shown_path`.
  FileReplacement(const std::string& target, const std::string& shown_path, std::optional<mode_t> mode,
                  std::string_view content);
  FileReplacement(FileReplacement&& other) noexcept;
  FileReplacement& operator=(FileReplacement&& other) = delete;
  ~FileReplacement();

  /// Makes it the file, also after a crash of the host. Throws as above.
  void take_effect();

 private:
  std::string target_;
  std::string shown_path_;
  std::string path_;  ///< empty: there is nothing to remove
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_FILE_REPLACEMENT_H
