#ifndef QZLOG_TOOLS_SHIP_DEAD_LETTERS_H
#define QZLOG_TOOLS_SHIP_DEAD_LETTERS_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// A line that is not delivered, and will not be.
struct DeadLetter {
  std::string_view reason;
  std::string_view identity;
  std::string_view file;  ///< where it stands
  std::uint64_t offset = 0;
  std::string_view line;
};

/// The file of lines that could not be delivered, as JSON Lines: reason, to, time, identity, file, offset, line, and,
/// where it is not UTF-8, its bytes in base64. Failures throw CommandError (cannot run).
class DeadLetters {
 public:
  /// The file is made when the first one comes. `to`: the URL.
  DeadLetters(std::string path, std::string to);

  void add(const DeadLetter& letter);
  /// Brings those that were added to the disk; false where there were none.
  bool sync();
  /// Of letters that were not brought there yet.
  std::size_t held_bytes() const { return text_.size(); }

  /// Since the start of the process.
  std::uint64_t count() const noexcept { return count_; }
  const std::string& path() const noexcept { return path_; }

 private:
  void open();

  std::string path_;
  std::string to_;
  FileDescriptor file_{-1};
  std::string text_;  // not written yet
  std::uint64_t count_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_DEAD_LETTERS_H
