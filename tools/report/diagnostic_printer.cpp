#include "tools/report/diagnostic_printer.h"

#include <iomanip>
#include <iostream>
#include <optional>
#include <sstream>

namespace qzlog_tool {

using qzlog_compiler::Diagnostic;
using qzlog_compiler::DiagnosticNote;
using qzlog_compiler::Severity;
using qzlog_compiler::SourceExcerpt;
using qzlog_compiler::SourcePosition;

namespace {

constexpr int kLineNumberWidth = 5;

}  // namespace

void DiagnosticPrinter::add_source(const std::string& file, std::string_view text) { sources_.try_emplace(file, text); }

void DiagnosticPrinter::print(std::span<const Diagnostic> diagnostics) {
  for (const Diagnostic& diagnostic : diagnostics) {
    // Standard error is not buffered; a diagnostic goes there in one piece.
    std::ostringstream text;
    print(diagnostic, text);
    out_ << text.str();
  }
}

void DiagnosticPrinter::print(const Diagnostic& diagnostic, std::ostream& out) const {
  const bool error = diagnostic.severity == Severity::kError;
  print_place(diagnostic.file, diagnostic.position, out);
  out << styled(error ? "error:" : "warning:", error ? TextStyle::kError : TextStyle::kWarning) << ' '
      << diagnostic.text << " [" << rule_name(diagnostic.rule) << "]\n";
  print_excerpt(diagnostic.file, diagnostic.position, out);
  for (const DiagnosticNote& note : diagnostic.notes) {
    print_place(note.file, note.position, out);
    out << styled("note:", TextStyle::kNote) << ' ' << note.text << '\n';
    print_excerpt(note.file, note.position, out);
  }
  if (!diagnostic.hint.empty()) out << "  " << styled("hint:", TextStyle::kNote) << ' ' << diagnostic.hint << '\n';
}

void DiagnosticPrinter::print_place(const std::string& file, SourcePosition position, std::ostream& out) {
  out << file << ':';
  if (position.known()) out << position.line << ':' << position.column << ':';
  out << ' ';
}

void DiagnosticPrinter::print_excerpt(const std::string& file, SourcePosition position, std::ostream& out) const {
  const auto source = sources_.find(file);
  if (source == sources_.end()) return;
  const std::optional<SourceExcerpt> excerpt = source->second.excerpt(position);
  if (!excerpt) return;
  out << std::setw(kLineNumberWidth) << position.line << " |" << (excerpt->line.empty() ? "" : " ") << excerpt->line
      << '\n'
      << std::string(kLineNumberWidth, ' ') << " | " << std::string(excerpt->caret, ' ')
      << styled("^", TextStyle::kMark) << '\n';
}

std::string DiagnosticPrinter::styled(std::string_view word, TextStyle style) const {
  return colour_ ? coloured(word, style) : std::string(word);
}

void print_diagnostics(std::span<const Diagnostic> diagnostics, const std::string& file, std::string_view text) {
  DiagnosticPrinter printer(std::cerr, stderr_has_colour());
  printer.add_source(file, text);
  printer.print(diagnostics);
}

}  // namespace qzlog_tool
