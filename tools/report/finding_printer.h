#ifndef QZLOG_TOOLS_REPORT_FINDING_PRINTER_H
#define QZLOG_TOOLS_REPORT_FINDING_PRINTER_H

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <span>
#include <string>
#include <string_view>

#include "tools/report/finding.h"
#include "tools/report/source_excerpt.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

/// Shows findings to people: the place, what is wrong, the line with a caret under the place, the same for every note,
/// and the hint. What stands in files is shown without its control characters.
///
///     storage.yaml:5:20: error: unknown attribute 'Nam' [unknown-attribute]
///         5 |     message: "Disk {Nam} is full"
///           |                    ^
///       hint: did you mean 'Name'?
///     storage.ldf: offset 20: error: the file ends within the header [bad-definition-file]
///     storage.ldf: warning: entry 1, selector message 3: an empty catalog key [empty-message-id]
class FindingPrinter {
 public:
  explicit FindingPrinter(bool colour) : colour_(colour) {}

  /// Gives the text of a file that findings are about, or the part of it that begins with the line `first_line`,
  /// instead of what was given before. It has to outlive the printing. Without it, or for a text that is no source, a
  /// finding shows no line.
  void add_source(const std::string& file, std::string_view text,
                  qzlog_compiler::LineBreaks breaks = qzlog_compiler::LineBreaks::kYaml, std::uint64_t first_line = 1);

  /// Each finding goes out in one piece.
  void print(std::span<const qzlog_compiler::Finding> findings, std::ostream& out) const;

  /// Adds a finding's lines to a text.
  void append(const qzlog_compiler::Finding& finding, std::string& out) const;

 private:
  friend std::string finding_heading(const qzlog_compiler::Finding& finding);

  void append_heading(const qzlog_compiler::Finding& finding, std::string& out) const;
  void append_excerpt(const std::string& file, qzlog_compiler::TextPlace place, std::string& out) const;
  void append_styled(std::string_view word, TextStyle style, std::string& out) const;

  bool colour_;
  std::map<std::string, qzlog_compiler::SourceLines, std::less<>> sources_;
};

/// A finding's first line, without colour and line feed.
std::string finding_heading(const qzlog_compiler::Finding& finding);

/// Shows findings about one file on standard error.
void print_findings(std::span<const qzlog_compiler::Finding> findings, const std::string& file, std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_FINDING_PRINTER_H
