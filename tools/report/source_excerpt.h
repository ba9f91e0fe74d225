#ifndef QZLOG_TOOLS_REPORT_SOURCE_EXCERPT_H
#define QZLOG_TOOLS_REPORT_SOURCE_EXCERPT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/report/finding.h"

namespace qzlog_compiler {

/// A line of a source as a terminal can show it, and how many of its columns stand before a place in it.
struct SourceExcerpt {
  std::string line;
  std::size_t caret = 0;
};

/// Shows a line: tabs as blanks, control characters as escapes, and of a line that is too long the part around the
/// place with "..." where it was cut. `column` counts characters from 1; one behind the end stands for the end, 0 for
/// the first that is no blank. None where the place is so far to the right that it is not worth looking for.
std::optional<SourceExcerpt> make_excerpt(std::string_view line, std::uint32_t column);

/// What ends a line: all that does for YAML, or a line feed alone, with or without a carriage return before it.
enum class LineBreaks { kYaml, kLineFeed };

/// A source, or a part of one, cut into the lines that places count. The text has to outlive it.
class SourceLines {
 public:
  explicit SourceLines(std::string_view source, LineBreaks breaks = LineBreaks::kYaml, std::uint64_t first_line = 1);

  /// None for a place that the source does not have.
  std::optional<SourceExcerpt> excerpt(TextPlace place) const;

 private:
  std::string_view line(std::size_t index) const;

  std::string_view source_;
  LineBreaks breaks_;
  std::uint64_t first_line_;
  std::vector<std::size_t> starts_;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_SOURCE_EXCERPT_H
