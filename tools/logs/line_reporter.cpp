#include "tools/logs/line_reporter.h"

#include <iostream>

#include "tools/compiler/text/line_cut.h"
#include "tools/report/command_message.h"
#include "tools/report/finding_printer.h"
#include "tools/report/passed_over.h"

namespace qzlog_tool {

using qzlog_compiler::Finding;
using qzlog_compiler::Severity;

namespace {

/// What looking for gaps finds is said of lines that are used all the same.
bool leaves_out_line(qzlog_compiler::AnyRule rule) {
  return rule != EntryRule::kMissingLines && rule != EntryRule::kDoubledLine;
}

}  // namespace

qzlog_compiler::TextPlace ErrorLine::place() const {
  if (byte == 0) return number;
  return {number, static_cast<std::uint32_t>(qzlog_compiler::character_count(text.substr(0, byte - 1))) + 1};
}

LineReporter::~LineReporter() = default;

// Where both go to one place, the error comes after the messages before it.
void LineReporter::begin() {
  output_.flush();
  progress_.clear();
}

void LineReporter::report(const ErrorLine& line, qzlog_compiler::AnyRule rule, const std::string& text) {
  ++count_;
  begin();
  const std::string file(line.file);
  if (leaves_out_line(rule)) passed_over().add("line", rule.name(), file, line.number);
  FindingPrinter printer(colour_);
  // A line that is too long is not read, and one that something is missing before was read long ago.
  if (!line.text.empty()) {
    printer.add_source(file, line.text, qzlog_compiler::LineBreaks::kLineFeed, line.number);
  }
  const Finding finding = {file, line.place(), Severity::kError, rule, text};
  printer.print({&finding, 1}, std::cerr);
}

void LineReporter::report(Severity severity, const std::string& text) {
  begin();
  print_command_message(severity, text);
}

void LineReporter::summarize(const std::string& text) {
  begin();
  std::cerr << text + '\n';
}

const qzlog_compiler::RuleInfo& reader_rule(std::string_view name) {
  const qzlog_compiler::RuleInfo* const row = qzlog_compiler::find_rule(all_entry_rules(), name);
  return row != nullptr ? *row : rule_info(entry_rule(qzlog::LineRule::kRefusedValue));
}

}  // namespace qzlog_tool
