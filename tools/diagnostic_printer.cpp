#include "tools/diagnostic_printer.h"

#include <iomanip>
#include <optional>
#include <ostream>

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
  for (const Diagnostic& diagnostic : diagnostics) print(diagnostic);
}

void DiagnosticPrinter::print(const Diagnostic& diagnostic) {
  const bool error = diagnostic.severity == Severity::kError;
  print_place(diagnostic.file, diagnostic.position);
  out_ << styled(error ? "error:" : "warning:", error ? TextStyle::kError : TextStyle::kWarning) << ' '
       << diagnostic.text << " [" << rule_name(diagnostic.rule) << "]\n";
  print_excerpt(diagnostic.file, diagnostic.position);
  for (const DiagnosticNote& note : diagnostic.notes) {
    print_place(note.file, note.position);
    out_ << styled("note:", TextStyle::kNote) << ' ' << note.text << '\n';
    print_excerpt(note.file, note.position);
  }
  if (!diagnostic.hint.empty()) out_ << "  " << styled("hint:", TextStyle::kNote) << ' ' << diagnostic.hint << '\n';
}

void DiagnosticPrinter::print_place(const std::string& file, SourcePosition position) {
  out_ << file << ':';
  if (position.known()) out_ << position.line << ':' << position.column << ':';
  out_ << ' ';
}

void DiagnosticPrinter::print_excerpt(const std::string& file, SourcePosition position) {
  const auto source = sources_.find(file);
  if (source == sources_.end()) return;
  const std::optional<SourceExcerpt> excerpt = source->second.excerpt(position);
  if (!excerpt) return;
  out_ << std::setw(kLineNumberWidth) << position.line << " |" << (excerpt->line.empty() ? "" : " ") << excerpt->line
       << '\n'
       << std::string(kLineNumberWidth, ' ') << " | " << std::string(excerpt->caret, ' ')
       << styled("^", TextStyle::kMark) << '\n';
}

std::string DiagnosticPrinter::styled(std::string_view word, TextStyle style) const {
  return colour_ ? coloured(word, style) : std::string(word);
}

}  // namespace qzlog_tool
