#include "tools/report/finding_printer.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <optional>

#include "tools/compiler/text/utf8_text.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {

using qzlog_compiler::Finding;
using qzlog_compiler::FindingNote;
using qzlog_compiler::printable;
using qzlog_compiler::SourceExcerpt;
using qzlog_compiler::TextPlace;

namespace {

constexpr std::size_t kLineNumberWidth = 5;

void append_place(const std::string& file, TextPlace place, std::string& out) {
  out.append(printable(file)) += ':';
  if (place.known()) out.append(std::to_string(place.line)) += ':';
  if (place.known() && place.column != 0) out.append(std::to_string(place.column)) += ':';
  out += ' ';
}

/// "entry 1 (FULL), selector message 3: "
void append_subject(const Finding& finding, std::string& out) {
  if (finding.entry_id) out.append("entry ").append(std::to_string(*finding.entry_id));
  if (finding.entry_id && !finding.entry_name.empty()) out.append(" (").append(printable(finding.entry_name)) += ')';
  if (finding.entry_id && !finding.subject.empty()) out += ", ";
  out += printable(finding.subject);
  if (finding.entry_id || !finding.subject.empty()) out += ": ";
}

}  // namespace

void FindingPrinter::add_source(const std::string& file, std::string_view text, qzlog_compiler::LineBreaks breaks,
                                std::uint64_t first_line) {
  sources_.insert_or_assign(file, qzlog_compiler::SourceLines(text, breaks, first_line));
}

void FindingPrinter::print(std::span<const Finding> findings, std::ostream& out) const {
  std::string text;  // standard error is not buffered
  for (const Finding& finding : findings) {
    text.clear();
    append(finding, text);
    write_as_it_is(out, text);
  }
}

void FindingPrinter::append_heading(const Finding& finding, std::string& out) const {
  append_place(finding.file, finding.place, out);
  if (finding.offset) out.append("offset ").append(std::to_string(*finding.offset)) += ": ";
  const bool error = is_error(finding);
  append_styled(error ? "error:" : "warning:", error ? TextStyle::kError : TextStyle::kWarning, out);
  out += ' ';
  append_subject(finding, out);
  out.append(printable(finding.text)).append(" [").append(finding.rule.name()) += ']';
}

void FindingPrinter::append(const Finding& finding, std::string& out) const {
  append_heading(finding, out);
  out += '\n';
  append_excerpt(finding.file, finding.place, out);
  for (const FindingNote& note : finding.notes) {
    append_place(note.file, note.place, out);
    append_styled("note:", TextStyle::kNote, out);
    out.append(" ").append(printable(note.text)) += '\n';
    append_excerpt(note.file, note.place, out);
  }
  if (finding.hint.empty()) return;
  append_styled("hint:", TextStyle::kNote, out.append("  "));
  out.append(" ").append(printable(finding.hint)) += '\n';
}

void FindingPrinter::append_excerpt(const std::string& file, TextPlace place, std::string& out) const {
  const auto source = sources_.find(file);
  if (source == sources_.end()) return;
  const std::optional<SourceExcerpt> excerpt = source->second.excerpt(place);
  if (!excerpt) return;
  const std::string number = std::to_string(place.line);
  const std::size_t width = std::max(number.size(), kLineNumberWidth);
  out.append(width - number.size(), ' ')
      .append(number)
      .append(excerpt->line.empty() ? " |" : " | ")
      .append(excerpt->line) += '\n';
  out.append(width, ' ').append(" | ").append(excerpt->caret, ' ');
  append_styled("^", TextStyle::kMark, out);
  out += '\n';
}

void FindingPrinter::append_styled(std::string_view word, TextStyle style, std::string& out) const {
  out.append(colour_ ? coloured(word, style) : word);
}

std::string finding_heading(const Finding& finding) {
  std::string text;
  FindingPrinter(false).append_heading(finding, text);
  return text;
}

void print_findings(std::span<const Finding> findings, const std::string& file, std::string_view text) {
  FindingPrinter printer(stderr_has_colour());
  printer.add_source(file, text);
  printer.print(findings, std::cerr);
}

}  // namespace qzlog_tool
