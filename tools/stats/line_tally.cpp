#include "tools/stats/line_tally.h"

#include <string>

#include "tools/logs/line_kind.h"
#include "tools/system/out_of_memory.h"

namespace qzlog_tool {

void LineTally::read(qz_LOG_EntryReader& reader) {
  take_lines(reader, parts_.choice != nullptr ? parts_.choice->line_choice() : this);
}

void LineTally::take_lines(qz_LOG_EntryReader& reader, qz_LOG_LineChoice* choice) {
  const MemoryErrors errors_of_lines;
  LineDefinitions definitions(parts_.sets, choice);
  reader.SetLineChoice(definitions.line_choice());
  while (!is_complete() && reader.Next(line_)) {
    take_line();
    reporter_.update(++lines_);
  }
}

// What is counted here need not be read.
bool LineTally::TakesLine(const char* line, std::size_t length) {
  if (!scan_.scan({line, length}, scanned_)) return true;
  grouping_.count(scanned_, table_);
  reporter_.update(++lines_);
  return false;
}

void LineTally::take_line() {
  if (parts_.choice != nullptr && !parts_.choice->takes(line_)) return;
  if (parts_.tail != nullptr) return parts_.tail->add(line_);
  count_line();
}

void LineTally::count_line() {
  if (is_entry(line_)) return grouping_.count(line_, table_);
  std::uint64_t& count = line_.IsLoss() ? lost_ : held_;
  for (std::size_t index = 0; index < line_.GetLostCount(); ++index) {
    const qz_LOG_LostEntries lost = line_.GetLost(index);
    if (parts_.choice == nullptr || parts_.choice->takes_lost(lost)) count += lost.count;
  }
}

void LineTally::finish() {
  if (parts_.tail == nullptr) return;
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(*parts_.tail, "", this);
  LineDefinitions definitions(parts_.sets, nullptr);
  reader.SetLineChoice(definitions.line_choice());
  while (reader.Next(line_)) count_line();
}

void LineTally::TakeLineError(const qz_LOG_LineError& error) {
  const qzlog_compiler::AnyRule rule(reader_rule(error.rule));
  const ErrorLine line = ErrorLine::of(error);
  reporter_.report(line, rule, error.text);
  if (findings_.size() == kKeptFindings) return;
  findings_.push_back({error.file, line.place(), qzlog_compiler::Severity::kError, rule, error.text});
}

}  // namespace qzlog_tool
