#include "tools/render/entry_rendering.h"

#include <csignal>
#include <optional>

#include "tools/render/line_identity.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/out_of_memory.h"

namespace qzlog_tool {

namespace {

/// Of the process: where a signal finds it.
EntryRendering* current = nullptr;

constexpr const char* kUncountable =
    "the message is not counted: the local date of 'time' is outside the years 1 to 9999";

std::string gap_text(const GapCheck::Gap& gap) {
  const std::uint64_t count = gap.last - gap.first + 1;
  std::string numbers = "seq " + std::to_string(gap.first);
  if (count > 1) numbers += " to " + std::to_string(gap.last);
  return std::to_string(count) + (count == 1 ? " line" : " lines") + " of the writer " + gap.writer +
         (count == 1 ? " is" : " are") + " missing before this one: " + numbers;
}

}  // namespace

EntryRendering::EntryRendering(TextBytes bytes, LineRenderer& renderer, EntryCounting* counting, GapCheck* gaps)
    : output_(STDOUT_FILENO, "standard output", bytes), renderer_(renderer), counting_(counting), gaps_(gaps) {
  // A message that is out is counted, whenever the command is killed.
  if (counting_ != nullptr) output_.before_flush([this] { counting_->flush(); });
  current = this;
  std::signal(SIGABRT, report_abort);
}

EntryRendering::~EntryRendering() {
  std::signal(SIGABRT, SIG_DFL);
  current = nullptr;
}

// The library ends the process where ICU takes a pattern and then cannot apply it. It does so from within a call of
// this thread, so what is rendered can still be written, and the line be named.
void EntryRendering::report_abort(int /*signal*/) {
  std::signal(SIGABRT, SIG_DFL);
  current->report({EntryRule::kBrokenPattern,
                   "ICU takes the message's pattern but cannot apply it; nothing behind this line is rendered"});
  ::_exit(kExitFindings);
}

// Inline: a call for each line shows.
inline void EntryRendering::render_line() {
  if (gaps_ != nullptr) check_number();
  if (line_.IsLoss() || line_.IsHeld()) return output_.write_line(renderer_.tell_loss(line_));
  ++entries_;
  try {
    const std::optional<std::string_view> message = renderer_.render(line_);
    if (!message) {
      ++refused_;
      return;
    }
    ++passed_;
    const bool is_counted = counting_ == nullptr || counting_->add(line_.GetEntry(), line_.HasTime());
    output_.write_line(*message);
    if (!is_counted) report({EntryRule::kUncountableDate, kUncountable});
  } catch (const EntryError& error) {
    report(error);
  }
}

void EntryRendering::render(qz_LOG_EntryReader& reader) {
  const MemoryErrors errors_of_lines;
  while (reader.Next(line_)) {
    render_line();
    progress_.update(++lines_);
  }
}

void EntryRendering::TakeLineError(const qz_LOG_LineError& error) {
  ++unread_;
  const ShownLine line = {error.file, error.line, {error.source, error.source_length}};
  errors_.report(line, qzlog_compiler::AnyRule(reader_rule(error.rule)), error.text);
  if (gaps_ == nullptr) return;
  const std::optional<LineIdentity> identity = line_identity(line.text);
  if (identity) check_number(identity->writer, identity->seq, line);
}

void EntryRendering::check_number() {
  const std::string_view writer = line_.GetWriter();
  if (writer.empty() || !line_.HasSeq()) return gaps_->add_unnumbered();
  check_number(writer, line_.GetSeq(), ShownLine::of(line_));
}

void EntryRendering::check_number(std::string_view writer, std::uint64_t seq, const ShownLine& line) {
  if (gaps_->add(writer, seq, {line.file, line.number})) return;
  ++numbers_;
  errors_.report(line, EntryRule::kDoubledLine,
                 "the writer " + std::string(writer) + " has a line with this seq already: " + std::to_string(seq));
}

void EntryRendering::finish() {
  output_.flush();
  if (gaps_ == nullptr) return;
  for (const GapCheck::Gap& gap : gaps_->gaps()) {
    ++numbers_;
    errors_.report({gap.file, gap.line, ""}, EntryRule::kMissingLines, gap_text(gap));
  }
}

void EntryRendering::print_filter_summary() {
  std::string text = "entries: " + std::to_string(entries_ + unread_) + " read, " + std::to_string(passed_) +
                     " passed, " + std::to_string(refused_) + " refused";
  const std::uint64_t wrong = errors_.count() - numbers_;
  if (wrong != 0) text += ", " + std::to_string(wrong) + " wrong";
  print(text);
}

void EntryRendering::print_gap_summary() { print(gaps_->summary()); }

void EntryRendering::print(const std::string& line) {
  progress_.clear();
  const std::string text = line + '\n';
  write_all(STDERR_FILENO, text.data(), text.size());
}

}  // namespace qzlog_tool
