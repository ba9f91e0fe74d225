#ifndef QZLOG_TOOLS_MERGE_MERGED_LOG_H
#define QZLOG_TOOLS_MERGE_MERGED_LOG_H

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/logs/log_inputs.h"
#include "tools/merge/line_moment.h"
#include "tools/merge/merge_reading.h"

namespace qzlog_tool {

/// The lines of one input of several, whose files are read one after the other: looked at by their bytes first, so that
/// it is known whose turn it is, and then, one by one, read as entries by a reader that sees each byte of the file.
class MergedLog : private qz_LOG_ByteSource {
 public:
  /// `reading` has to outlive this object.
  MergedLog(InputFiles files, const MergeReading& reading) : files_(std::move(files)), reading_(reading) {}

  /// Goes to the next line that is wanted. False when there is none any more.
  bool find_next();
  /// Of the line that was found: its own moment, or that of the line before it where it says none or an earlier one.
  long long moment() const { return moment_; }
  /// Reads the line that was found. False where it is no entry, which is told as the reader tells it.
  bool read(qz_LOG_EntryLine& line);

  bool has_failed() const { return has_failed_; }
  unsigned long long refused_count() const { return refused_; }

 private:
  std::size_t Read(char* buffer, std::size_t size) override;

  void fail(const std::string& reason);
  bool open_next();
  void close();
  bool cut();
  void take(std::size_t end, bool has_line_feed);
  void fill();
  void make_room();
  void pass_over();
  void skip_byte_order_mark();
  bool is_wanted();
  std::size_t read_long_line(char* buffer, std::size_t size);
  std::string_view line() const { return {bytes_.data() + line_begin_, line_end_ - line_begin_}; }

  InputFiles files_;
  const MergeReading& reading_;
  std::size_t next_file_ = 0;
  std::unique_ptr<qz_LOG_ByteSource> file_;
  std::optional<qz_LOG_EntryReader> reader_;
  LineMoments moments_;
  long long moment_ = std::numeric_limits<long long>::min();

  // Of the file: up to next_ the line at hand behind those that are passed over, then what was not looked at.
  std::vector<char> bytes_;
  std::size_t begin_ = 0;  // the first that the reader has not seen
  std::size_t line_begin_ = 0;
  std::size_t line_end_ = 0;  // without the line feed
  std::size_t next_ = 0;
  std::size_t searched_ = 0;
  std::size_t end_ = 0;
  std::size_t given_ = 0;  // the reader may see up to here
  bool at_start_ = true;
  bool at_end_ = false;
  bool has_line_feed_ = true;
  bool is_too_long_ = false;
  bool has_failed_ = false;
  unsigned long long refused_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MERGE_MERGED_LOG_H
