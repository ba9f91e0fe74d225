#ifndef QZLOG_TOOLS_SYSTEM_LINE_READER_H
#define QZLOG_TOOLS_SYSTEM_LINE_READER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// Cuts a stream of bytes into lines, in memory that does not grow with their number.
class LineReader {
 public:
  struct Line {
    std::string_view text;     ///< without its line feed; valid until the next call; empty when it was too long
    std::uint64_t number = 0;  ///< counted from 1
    bool too_long = false;
  };

  /// Longer lines are reported and skipped.
  static constexpr std::size_t kMaximumLineBytes = std::size_t{16} << 20;
  /// So many bytes behind every line can be read, whatever they hold.
  static constexpr std::size_t kPaddingBytes = 64;

  /// Reads from `descriptor`, which has to outlive this object; `file_name` is for error texts.
  LineReader(int descriptor, std::string file_name, std::size_t maximum_line_bytes = kMaximumLineBytes);

  /// The next line that is already in memory. False when none is: call `fill`, unless `at_end`.
  bool next(Line& line);
  /// Waits for more input. Throws CommandError when the file cannot be read.
  void fill();
  /// True when all input was taken in. A last line without a line feed then counts as a line, an empty one does not.
  bool at_end() const noexcept { return at_end_; }

 private:
  bool take(std::size_t length, std::size_t separator, Line& line);
  bool skip_to_line_feed();
  void skip_byte_order_mark();
  void make_room();

  int descriptor_;
  std::string file_name_;
  std::size_t maximum_line_bytes_;
  std::size_t capacity_;  // of the buffer, without the padding
  std::unique_ptr<char[]> buffer_;
  std::size_t begin_ = 0;    // the first byte not given out yet
  std::size_t scanned_ = 0;  // no line feed stands between begin_ and here
  std::size_t end_ = 0;
  std::uint64_t line_number_ = 0;
  bool at_end_ = false;
  bool skipping_ = false;  // inside a line that is too long
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_LINE_READER_H
