#ifndef QZLOG_TOOLS_SHIP_SHIPPED_FILE_H
#define QZLOG_TOOLS_SHIP_SHIPPED_FILE_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ship/file_progress.h"
#include "tools/ship/line_taker.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// A file of a series that is read line by line from a place in it, while it grows. A line is given out when it has its
/// end, for until then its writer may take it back. Failures throw UnreadableInput.
///
/// Memory is for what was read and not given out yet, at most one block, or one line that is longer.
class ShippedFile {
 public:
  /// Lines that are longer are not given out.
  static constexpr std::size_t kLongestLine = std::size_t{16} << 20;
  using Clock = std::chrono::steady_clock;

  /// Takes the file over, from where it is settled.
  ShippedFile(FileDescriptor file, std::shared_ptr<FileProgress> progress);

  /// Gives out all lines that are there, until the taker has enough: false then. One that became shorter is read again
  /// from its beginning, which the taker is told.
  bool read(LineTaker& taker);
  /// Gives out what stands behind the last line feed. False when the taker has enough.
  bool read_rest(LineTaker& taker);
  /// Nothing more will be read: what is settled up to here is all.
  void close_at_end() { progress_->end = position(); }

  int descriptor() const noexcept { return file_.get(); }
  const std::shared_ptr<FileProgress>& progress() const noexcept { return progress_; }
  /// When something was found in it last, or it was opened.
  Clock::time_point latest_growth() const noexcept { return latest_growth_; }
  /// As of the last read:
  bool is_empty() const noexcept { return size_ == 0; }
  bool is_deleted() const noexcept { return is_deleted_; }

 private:
  enum class Step { kGoOn, kNothingMore, kEnough };

  std::uint64_t position() const { return block_begin_ + given_; }
  void ask_status();
  Step read_some(LineTaker& taker);
  void begin_again(LineTaker& taker);
  bool read_block();
  Step skip_long_line(LineTaker& taker);
  bool give_out(LineTaker& taker);
  bool give_out_line(std::string_view line, const ReadLine& at, LineTaker& taker);
  void drop_block();
  std::size_t read_at(std::uint64_t offset, char* buffer, std::size_t size) const;

  FileDescriptor file_;
  std::shared_ptr<FileProgress> progress_;
  std::uint64_t size_ = 0;
  bool is_deleted_ = false;
  Clock::time_point latest_growth_ = Clock::now();
  std::string block_;                  // lines with their ends
  std::size_t file_bytes_ = 0;         // of the block: one less where the file lacks the last line feed
  std::uint64_t block_begin_;          // where it stands in the file
  std::uint64_t long_line_seen_ = 0;   // up to where a line that is too long has no end
  std::size_t given_ = 0;              // of it
  std::vector<LineVerdict> verdicts_;  // on its lines; empty: all are wanted
  std::size_t line_ = 0;               // the number of the next one in the block
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_SHIPPED_FILE_H
