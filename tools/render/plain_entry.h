#ifndef QZLOG_TOOLS_RENDER_PLAIN_ENTRY_H
#define QZLOG_TOOLS_RENDER_PLAIN_ENTRY_H

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "tools/render/json_value.h"
#include "tools/render/quote_index.h"

namespace qzlog_tool {

/// A quick way through the lines that most entries are: known keys, each once; texts without escapes; integers, true
/// and false. It says nothing about other lines, right or wrong: they are the general parser's.
class PlainEntryScanner {
 public:
  /// Longer lines are never plain: two in memory at once would be too much.
  static constexpr std::size_t kMaximumBytes = std::size_t{64} << 10;

  PlainEntryScanner();

  /// Makes a new `entry` what a plain line says and returns true; false, with an undefined `entry`, for every other
  /// line. What it says is valid until the next call.
  bool scan(std::string_view line, JsonEntry& entry);

 private:
  std::unique_ptr<char[]> text_;  // a copy of the line, in which zero bytes are put behind texts
  QuoteIndex quotes_;
  std::vector<JsonAttribute> attributes_;  // more than the last line's: what took memory is kept
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_PLAIN_ENTRY_H
