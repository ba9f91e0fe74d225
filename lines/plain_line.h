#ifndef QZLOG_LINES_PLAIN_LINE_H
#define QZLOG_LINES_PLAIN_LINE_H

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "lines/line_fields.h"
#include "lines/quote_index.h"

namespace qzlog {

/// A quick way through the lines that most entries are: known keys, each once; texts, numbers, true
/// and false. It says nothing about other lines, right or wrong: they are the general parser's.
class PlainLineScanner {
 public:
  /// Longer lines are never plain: two in memory at once would be too much.
  static constexpr std::size_t kMaximumBytes = std::size_t{64} << 10;

  /// Makes new `fields` what a plain line says and returns true; false, with undefined `fields`, for every other line.
  /// What it says is valid until the next call.
  bool scan(std::string_view line, LineFields& fields);

 private:
  void make_room(std::size_t size);

  std::size_t capacity_ = 0;
  std::unique_ptr<char[]> text_;  // a copy of the line, in which zero bytes are put behind texts
  QuoteIndex quotes_;
  std::vector<LineAttribute> attributes_;  // more than the last line's: what took memory is kept
};

}  // namespace qzlog

#endif  // QZLOG_LINES_PLAIN_LINE_H
