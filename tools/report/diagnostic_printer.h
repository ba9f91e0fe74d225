#ifndef QZLOG_TOOLS_REPORT_DIAGNOSTIC_PRINTER_H
#define QZLOG_TOOLS_REPORT_DIAGNOSTIC_PRINTER_H

#include <iosfwd>
#include <map>
#include <span>
#include <string>
#include <string_view>

#include "tools/report/diagnostics.h"
#include "tools/report/source_excerpt.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

/// Shows diagnostics to people: the place, what is wrong, the line with a caret under the place, the same for every
/// note, and the hint.
///
///     storage.yaml:5:20: error: unknown attribute 'Nam' [unknown-attribute]
///         5 |     message: "Disk {Nam} is full"
///           |                    ^
///       hint: did you mean 'Name'?
class DiagnosticPrinter {
 public:
  DiagnosticPrinter(std::ostream& out, bool colour) : out_(out), colour_(colour) {}

  /// Gives the text of a file that diagnostics are about, which has to outlive the printer. Without it, or for a text
  /// that is no source, a diagnostic shows no line.
  void add_source(const std::string& file, std::string_view text);

  void print(std::span<const qzlog_compiler::Diagnostic> diagnostics);

 private:
  void print(const qzlog_compiler::Diagnostic& diagnostic, std::ostream& out) const;
  static void print_place(const std::string& file, qzlog_compiler::SourcePosition position, std::ostream& out);
  void print_excerpt(const std::string& file, qzlog_compiler::SourcePosition position, std::ostream& out) const;
  std::string styled(std::string_view word, TextStyle style) const;

  std::ostream& out_;
  bool colour_;
  std::map<std::string, qzlog_compiler::SourceLines> sources_;
};

/// Shows diagnostics about one file on standard error.
void print_diagnostics(std::span<const qzlog_compiler::Diagnostic> diagnostics, const std::string& file,
                       std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_DIAGNOSTIC_PRINTER_H
