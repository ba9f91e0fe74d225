#include "tools/render/entry_rendering.h"

#include <optional>
#include <utility>

#include "tools/logs/line_kind.h"
#include "tools/logs/line_members.h"
#include "tools/system/out_of_memory.h"

namespace qzlog_tool {

namespace {

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

EntryRendering::EntryRendering(BufferedOutput& output, LineReporter& reporter, LineRenderer& renderer,
                               const RenderingParts& parts)
    : output_(output),
      reporter_(reporter),
      renderer_(renderer),
      parts_(parts),
      needs_messages_(parts.shown == nullptr || parts.shown->shows_message()) {
  // A message that is out is counted, whenever the command is killed.
  if (parts_.counting != nullptr) output_.before_flush([this] { parts_.counting->flush(); });
}

void EntryRendering::report_abort() {
  report({EntryRule::kBrokenPattern,
          "ICU takes the message's pattern but cannot apply it; nothing behind this line is rendered"});
}

ErrorLine EntryRendering::place() const {
  ErrorLine line = ErrorLine::of(line_);
  if (part_file_ != nullptr) {
    line.file = part_file_;
    line.number += lines_before_;
  }
  if (place_in_log_ != nullptr) {
    line.file = *place_in_log_->file;
    line.number = place_in_log_->line;
  }
  return line;
}

// Inline: a call for each line shows.
inline void EntryRendering::show(std::string_view message) {
  if (parts_.shown == nullptr) return output_.write_line(message);
  if (place_in_log_ != nullptr) {
    return parts_.shown->write({line_, message, place_in_log_->file->c_str(), place_in_log_->line});
  }
  if (part_file_ == nullptr) return parts_.shown->write({line_, message});
  parts_.shown->write({line_, message, part_file_, line_.GetLine() + lines_before_});
}

inline void EntryRendering::show_line(bool has_entry) {
  if (!has_entry) return show(renderer_.tell_loss(line_));
  try {
    const std::string_view message = needs_messages_ ? renderer_.render(line_) : std::string_view();
    counts_.has_shown = true;
    const bool is_counted = parts_.counting == nullptr || parts_.counting->add(line_.GetEntry(), line_.HasTime());
    show(message);
    if (!is_counted) report({EntryRule::kUncountableDate, kUncountable});
  } catch (const EntryError& error) {
    ++counts_.failed;
    if (on_no_memory_ && error.rule == entry_rule(qzlog::LineRule::kOutOfMemory)) on_no_memory_();
    report(error);
  }
}

// Asked behind the choice, which leaves out some lines before they are read: what is counted is then the same however
// much bytes tell.
inline bool EntryRendering::passes_filter(bool has_entry) {
  if (!has_entry) return true;
  ++counts_.entries;
  if (parts_.filter == nullptr || parts_.filter->lets_through(line_.GetEntry())) return true;
  ++counts_.refused;
  return false;
}

inline void EntryRendering::take_line() {
  if (parts_.gaps != nullptr) check_number();
  if (parts_.choice != nullptr && !parts_.choice->wants(line_)) return;
  const bool has_entry = is_entry(line_);
  if (!passes_filter(has_entry)) return;
  if (parts_.choice != nullptr) parts_.choice->count();
  if (parts_.tail != nullptr) return parts_.tail->add(line_);
  show_line(has_entry);
}

// Numbers are those of all lines.
qz_LOG_LineChoice* EntryRendering::line_choice() const {
  return parts_.choice != nullptr && parts_.gaps == nullptr ? parts_.choice->line_choice() : nullptr;
}

void EntryRendering::render(qz_LOG_EntryReader& reader) {
  LineDefinitions definitions(parts_.sets, line_choice());
  reader.SetLineChoice(definitions.line_choice());
  take_lines(reader);
}

void EntryRendering::render(MergedLogs& logs) { take_lines(logs); }

template <typename Reader>
void EntryRendering::take_lines(Reader& reader) {
  const MemoryErrors errors_of_lines;
  while (!is_complete() && reader.Next(line_)) {
    take_line();
    reporter_.update(++lines_);
  }
}

void EntryRendering::render_part(qz_LOG_EntryReader& reader, const char* file, std::uint64_t lines_before) {
  const MemoryErrors errors_of_lines;
  part_file_ = file;
  lines_before_ = lines_before;
  reader.SetLineChoice(line_choice());
  while (reader.Next(line_)) take_line();
}

void EntryRendering::add(const RenderedCounts& counts) {
  counts_.entries += counts.entries;
  counts_.refused += counts.refused;
  counts_.failed += counts.failed;
  counts_.unread += counts.unread;
  counts_.has_shown = counts_.has_shown || counts.has_shown;
}

void EntryRendering::catch_up() {
  if (parts_.tail != nullptr) {
    LineTail& tail = *std::exchange(parts_.tail, nullptr);
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(tail, "", this);
    LineDefinitions definitions(parts_.sets, nullptr);
    reader.SetLineChoice(definitions.line_choice());
    while (reader.Next(line_)) {
      place_in_log_ = &tail.place(line_.GetLine());
      show_line(is_entry(line_));
    }
    place_in_log_ = nullptr;
  }
  output_.flush();
}

void EntryRendering::TakeLineError(const qz_LOG_LineError& error) {
  ++counts_.unread;
  ErrorLine line = ErrorLine::of(error);
  if (part_file_ != nullptr) line.file = part_file_;
  line.number += lines_before_;
  reporter_.report(line, qzlog_compiler::AnyRule(reader_rule(error.rule)), error.text);
  if (parts_.gaps == nullptr) return;
  const std::optional<LineMembers> members = read_line_members(line.text);
  if (members && !members->writer.empty() && members->seq) check_number(members->writer, *members->seq, line);
}

void EntryRendering::check_number() {
  const std::string_view writer = line_.GetWriter();
  if (writer.empty() || !line_.HasSeq()) return parts_.gaps->add_unnumbered();
  check_number(writer, line_.GetSeq(), place());
}

void EntryRendering::check_number(std::string_view writer, std::uint64_t seq, const ErrorLine& line) {
  if (parts_.gaps->add(writer, seq, {line.file, line.number})) return;
  ++numbers_;
  reporter_.report(line, EntryRule::kDoubledLine,
                   "the writer " + std::string(writer) + " has a line with this seq already: " + std::to_string(seq));
}

void EntryRendering::finish() {
  catch_up();
  if (parts_.gaps == nullptr) return;
  for (const GapCheck::Gap& gap : parts_.gaps->gaps()) {
    ++numbers_;
    reporter_.report({gap.file, gap.line, ""}, EntryRule::kMissingLines, gap_text(gap));
  }
}

std::string EntryRendering::filter_summary() const {
  std::string text = "entries: " + std::to_string(counts_.entries + counts_.unread) + " read, " +
                     std::to_string(counts_.entries - counts_.refused - counts_.failed) + " passed, " +
                     std::to_string(counts_.refused) + " refused";
  const std::uint64_t wrong = reporter_.count() - numbers_;
  if (wrong != 0) text += ", " + std::to_string(wrong) + " wrong";
  return text;
}

}  // namespace qzlog_tool
