#ifndef QZLOG_SINKS_LOG_FILE_H
#define QZLOG_SINKS_LOG_FILE_H

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/descriptor.h"

namespace qzlog {

/// Which file something is, whatever its name.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  bool operator==(const FileIdentity& other) const = default;
};
FileIdentity identity_of(const struct stat& status);

/// An open file, pipe or device that whole lines are appended to. One thread at a time.
class LogFile : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Closes what was open, and opens or makes this. False with errno.
  bool open(const std::string& path, mode_t permissions);
  void close() { file_.reset(); }
  /// The same; the path is the one that should have been opened.
  void close_for(std::string path) {
    file_.reset();
    path_ = std::move(path);
  }
  /// Closes nothing: the number belongs to something else by now.
  void forget() { static_cast<void>(file_.release()); }
  bool is_open() const { return static_cast<bool>(file_); }
  void swap(LogFile& other) noexcept;

  const std::string& path() const { return path_; }
  bool is_regular() const { return is_regular_; }
  FileIdentity identity() const { return identity_; }
  /// The size of the open file. False when it is not ours any more (something has closed all descriptors of the
  /// process) or the system does not tell.
  bool get_size(std::uint64_t& size) const;
  /// Whether the path still leads to this file.
  bool is_named() const;

  /// Appends in as few writes as possible, waiting so long for a pipe's reader. Returns how many bytes are in the
  /// file, at the end of which there may be a part of a line; errno has the reason when they are not all.
  std::size_t append(std::string_view lines, unsigned longest_wait_milliseconds) const {
    if (!is_regular_) [[unlikely]]
      return append_to_pipe(lines, longest_wait_milliseconds);
    const ssize_t count = ::write(file_.get(), lines.data(), lines.size());
    if (count == static_cast<ssize_t>(lines.size())) [[likely]]
      return lines.size();
    return append_rest(lines, count);
  }
  /// Takes so many bytes from the end.
  bool cut(std::size_t bytes) const;
  bool sync() const;

 private:
  std::size_t append_rest(std::string_view lines, ssize_t first_count) const;
  std::size_t append_to_pipe(std::string_view lines, unsigned longest_wait_milliseconds) const;

  Descriptor file_;
  std::string path_;
  FileIdentity identity_;
  bool is_regular_ = false;
};

/// Takes from the file what a killed process left of a line. Where the end is no part of one of our lines, or cutting
/// does not work, it gets a line break. The bytes that were cut off or closed; -1 with errno when nothing worked.
long long repair_end(const std::string& path, const FileIdentity& identity, bool may_cut);

}  // namespace qzlog

#endif  // QZLOG_SINKS_LOG_FILE_H
