#ifndef QZLOG_SINKS_PENDING_LINES_H
#define QZLOG_SINKS_PENDING_LINES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog {

/// The lines of one writer, told from others by their beginning.
class WriterLines {
 public:
  explicit WriterLines(std::string_view writer);

  /// The number of a line, with or without its end; 0 when it is no line of this writer.
  std::uint64_t seq_of(std::string_view line) const;

 private:
  std::string beginning_;
};

struct NumberedLine {
  std::uint64_t seq;
  std::string_view text;  ///< with its end
};

/// The writer's whole lines among `text`; the bytes of what is none are added to `others`.
std::vector<NumberedLine> find_lines(std::string_view text, const WriterLines& writer, unsigned long long& others);

/// The highest number among the writer's whole lines in an open file from `begin` on; 0 when there is none.
std::uint64_t last_seq_in_file(int file, std::uint64_t begin, const WriterLines& writer);

}  // namespace qzlog

#endif  // QZLOG_SINKS_PENDING_LINES_H
