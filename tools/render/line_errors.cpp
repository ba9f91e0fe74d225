#include "tools/render/line_errors.h"

#include <unistd.h>

#include "tools/report/finding_printer.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

using qzlog_compiler::Severity;

// Where both go to one place, the error comes after the messages before it.
void LineErrors::begin() {
  output_.flush();
  progress_.clear();
}

void LineErrors::report(const ErrorLine& line, qzlog_compiler::AnyRule rule, const std::string& text) {
  ++count_;
  begin();
  const std::string file(line.file);
  FindingPrinter printer(colour_);
  // A line that is too long is not read, and one that something is missing before was read long ago.
  if (!line.text.empty()) {
    printer.add_source(file, line.text, qzlog_compiler::LineBreaks::kLineFeed, line.number);
  }
  std::string shown;
  printer.append({file, line.number, Severity::kError, rule, text}, shown);
  write_all(STDERR_FILENO, shown.data(), shown.size());
}

void LineErrors::report(Severity severity, const std::string& text) {
  begin();
  const std::string label = severity == Severity::kError ? std::string(error_label())
                            : colour_                    ? coloured("warning:", TextStyle::kWarning)
                                                         : "warning:";
  const std::string shown = "qzlog: " + label + ' ' + text + '\n';
  write_all(STDERR_FILENO, shown.data(), shown.size());
}

const qzlog_compiler::RuleInfo& reader_rule(std::string_view name) {
  const qzlog_compiler::RuleInfo* const row = qzlog_compiler::find_rule(all_entry_rules(), name);
  return row != nullptr ? *row : rule_info(entry_rule(qzlog::LineRule::kRefusedValue));
}

}  // namespace qzlog_tool
