#ifndef QZLOG_TOOLS_REPORT_SOURCE_EXCERPT_H
#define QZLOG_TOOLS_REPORT_SOURCE_EXCERPT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/report/diagnostics.h"

namespace qzlog_compiler {

/// A line of a source as a terminal can show it, and how many of its columns stand before a place in it.
struct SourceExcerpt {
  std::string line;
  std::size_t caret = 0;
};

/// Shows a line: tabs as blanks, control characters as escapes, and of a line that is too long the part around the
/// place with "..." where it was cut. `column` counts characters from 1; one behind the end stands for the end. None
/// where the place is so far to the right that it is not worth looking for.
std::optional<SourceExcerpt> make_excerpt(std::string_view line, std::uint32_t column);

/// A source cut into the lines that positions count. The text has to outlive it.
class SourceLines {
 public:
  explicit SourceLines(std::string_view source);

  /// None for a place that the source does not have.
  std::optional<SourceExcerpt> excerpt(SourcePosition position) const;

 private:
  std::string_view line(std::size_t index) const;

  std::string_view source_;
  std::vector<std::size_t> starts_;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_SOURCE_EXCERPT_H
