#ifndef QZLOG_TOOLS_RENDER_FOLLOWED_FILE_H
#define QZLOG_TOOLS_RENDER_FOLLOWED_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "qzlog/entry_lines.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// Thrown where a followed file has nothing more for the time being, or the command has been asked to end.
struct NothingYet {};

/// Which file something is, whatever its name.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  bool operator==(const FileIdentity&) const = default;
};

/// A file that grows, line by line: a line is given out when it has its end, for until then a writer may take back what
/// it has written of it. Failures throw UnreadableInput.
class FollowedFile : public qz_LOG_ByteSource {
 public:
  /// Takes the file over, from its beginning. `shown_path` is for errors.
  FollowedFile(FileDescriptor file, std::string shown_path);

  int descriptor() const noexcept { return file_.get(); }
  const FileIdentity& identity() const noexcept { return identity_; }

  /// Lets Read give out the lines that are there now. False when the file has become shorter than what was given out
  /// already: it then has to begin again.
  bool look();
  void begin_again() noexcept;
  /// Lets Read give out what is there now, with a last line that has no end, and then be at its end.
  void finish();

  // As of the last look:
  bool has_lines() const noexcept { return position_ < limit_; }
  bool is_empty() const noexcept { return size_ == 0; }
  bool is_deleted() const noexcept { return is_deleted_; }

  /// Throws NothingYet.
  std::size_t Read(char* buffer, std::size_t size) override;

 private:
  void ask_status();
  std::uint64_t end_of_lines();
  std::size_t read_at(std::uint64_t offset, char* buffer, std::size_t size) const;

  FileDescriptor file_;
  std::string shown_path_;
  FileIdentity identity_;
  std::uint64_t size_ = 0;
  std::uint64_t position_ = 0;  // of the next byte to be given out: the beginning of a line
  std::uint64_t limit_ = 0;     // the end of the lines that may be given out
  std::uint64_t searched_ = 0;  // no line ends between the position and here
  bool is_deleted_ = false;
  bool is_finished_ = false;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_FOLLOWED_FILE_H
