#ifndef QZLOG_LINES_LINE_CUTTER_H
#define QZLOG_LINES_LINE_CUTTER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "qzlog/entry_lines.h"

namespace qzlog {

/// Cuts bytes into lines: a stream, in memory that does not grow with their number, or what is in memory anyway.
class LineCutter {
 public:
  struct Line {
    std::string_view text;     ///< without its line feed; valid until the next call; empty when it was too long
    std::uint64_t number = 0;  ///< counted from 1
    std::uint64_t offset = 0;  ///< of its first byte, from the source's first one
    bool too_long = false;
    bool has_end = true;  ///< false for a last line without a line feed
  };

  /// Longer lines are reported and skipped.
  static constexpr std::size_t kMaximumLineBytes = std::size_t{16} << 20;

  /// `source` has to outlive this object. Takes no memory.
  explicit LineCutter(qz_LOG_ByteSource& source, std::size_t maximum_line_bytes = kMaximumLineBytes) noexcept
      : source_(&source), maximum_line_bytes_(maximum_line_bytes) {}
  /// `bytes` have to stay where they are; all input is taken in.
  explicit LineCutter(std::string_view bytes, std::size_t maximum_line_bytes = kMaximumLineBytes) noexcept;

  /// The next line that is already in memory. False when none is: call `fill`, unless `at_end`.
  bool next(Line& line);
  /// Waits for more input. Without memory QZX_memory_alloc is thrown; whatever the source throws goes on. Nothing is
  /// lost then: call it again.
  void fill();
  /// True when all input was taken in. A last line without a line feed then counts as a line, an empty one does not.
  bool at_end() const noexcept { return at_end_; }

 private:
  const char* find_line_feed(std::size_t begin) const;
  bool take(std::size_t length, std::size_t separator, Line& line);
  bool skip_to_line_feed(Line& line);
  void skip_byte_order_mark();
  void make_room();

  qz_LOG_ByteSource* source_ = nullptr;  // null for bytes in memory
  std::size_t maximum_line_bytes_;
  std::size_t capacity_ = 0;
  std::unique_ptr<char[]> buffer_;
  const char* text_ = nullptr;  // the buffer, or the bytes in memory
  std::size_t begin_ = 0;       // the first byte not given out yet
  std::size_t scanned_ = 0;     // no line feed stands between begin_ and here
  std::size_t end_ = 0;
  std::uint64_t line_number_ = 0;
  std::uint64_t offset_ = 0;       // of the text's first byte
  std::uint64_t line_offset_ = 0;  // of the line that is too long
  bool at_start_ = true;           // a byte order mark may follow
  bool at_end_ = false;
  bool skipping_ = false;  // inside a line that is too long
};

}  // namespace qzlog

#endif  // QZLOG_LINES_LINE_CUTTER_H
