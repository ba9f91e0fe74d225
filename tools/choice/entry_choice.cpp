#include "tools/choice/entry_choice.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "tools/choice/event_check.h"
#include "tools/choice/reader_moment.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/logs/event_name.h"
#include "tools/logs/line_kind.h"
#include "tools/logs/written_moment.h"
#include "tools/options/option_checks.h"
#include "tools/report/finding_printer.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::quoted;

constexpr std::uint32_t kMostId = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kMostLevel = 9;

std::optional<long long> read_moment(const std::string& text, const char* option, const ReaderClock& clock) {
  if (text.empty()) return std::nullopt;
  const std::optional<long long> moment = find_moment(text, clock);
  if (!moment) throw CommandError(kExitCannotRun, std::string(option) + ": " + quoted(text) + " is no time");
  return moment;
}

void require(const char* option, const std::optional<NoSuchEvent>& fault) {
  if (!fault) return;
  throw CommandError(kExitCannotRun,
                     std::string(option) + ": " + fault->text + (fault->hint.empty() ? "" : "; " + fault->hint));
}

bool any_matches(const std::vector<Wildcard>& patterns, std::string_view text) {
  return std::any_of(patterns.begin(), patterns.end(), [text](const Wildcard& own) { return own.matches(text); });
}

bool any_matches(const std::vector<Wildcard>& patterns, const std::vector<std::string>& texts) {
  return std::any_of(texts.begin(), texts.end(), [&](const std::string& text) { return any_matches(patterns, text); });
}

bool shares_bit(const std::vector<std::uint32_t>& masks, std::uint32_t mask) {
  return std::any_of(masks.begin(), masks.end(), [mask](std::uint32_t own) { return (own & mask) != 0; });
}

}  // namespace

EntryChoice::EntryChoice(const ChoiceOptions& options, const KnownDefinitions& known, const ReaderClock& clock)
    : known_(known),
      since_(read_moment(options.since, "--since", clock)),
      until_(read_moment(options.until, "--until", clock)),
      losses_(options.losses),
      writers_(options.writers.begin(), options.writers.end()),
      head_(options.head) {
  if (since_) since_text_ = line_moment_text(*since_);
  if (until_) until_text_ = line_moment_text(*until_);
  if (!options.level.empty()) levels_ = parse_range(options.level, kMostLevel).value_or(levels_);
  if (!options.mask.empty()) mask_ = parse_mask(options.mask);
  read_ids(options.ids);
  read_names(options.names);
  if (!options.where.empty()) read_where(options.where, clock);
  if (options.unique) seen_.emplace();
  find_refused_events();
  decides_on_bytes_ = since_ || until_ || ids_ || mask_ || !names_.empty() || !writers_.empty() || where_ ||
                      levels_ != NumberRange{0, kMostLevel};
}

void EntryChoice::read_ids(const std::vector<std::string>& ids) {
  std::vector<NumberRange> ranges;
  for (const std::string& text : ids) {
    for (const NumberRange range : parse_ranges(text, kMostId).value_or(std::vector<NumberRange>())) {
      if (range.first == range.last) require("--id", find_fault_of_id(range.first, known_));
      ranges.push_back(range);
    }
  }
  if (!ids.empty()) ids_.emplace(std::move(ranges));
}

void EntryChoice::read_names(const std::vector<std::string>& names) {
  names_ = std::vector<Wildcard>(names.begin(), names.end());
  for (std::size_t index = 0; index < names.size(); ++index) {
    require("--name", find_fault_of_name(names[index], names_[index], known_));
  }
}

void EntryChoice::read_where(const std::string& where, const ReaderClock& clock) {
  const std::string name = "--where";
  qzlog_compiler::Findings findings(name);
  where_ = Where::compile(where, known_, clock, findings);
  if (where_) return;
  print_findings(findings.all(), name, where);
  throw CommandError(kExitCannotRun, "");
}

void EntryChoice::find_refused_events() {
  std::vector<NumberRange> refused;
  std::vector<NumberRange> refused_losses;
  for (const auto& [id, event] : known_.events()) {
    if (losses_ && !shares_bit(event.masks, losses_->mask)) refused_losses.push_back({id, id});
    const bool has_wanted_name = names_.empty() || event.names.empty() || any_matches(names_, event.names);
    const bool has_wanted_mask = !mask_ || shares_bit(event.masks, *mask_);
    if (!has_wanted_name || !has_wanted_mask) refused.push_back({id, id});
  }
  refused_events_ = NumberSet(std::move(refused));
  refused_losses_ = NumberSet(std::move(refused_losses));
}

bool EntryChoice::wants(const qz_LOG_EntryLine& line) {
  return !is_complete() && (is_entry(line) ? takes_entry(line) : takes_loss(line)) && is_new(line);
}

bool EntryChoice::takes_entry(const qz_LOG_EntryLine& line) {
  const qz_LOG_LogEntry& entry = line.GetEntry();
  if (!takes_id(entry.GetEntryID()) || !levels_.holds(entry.GetLogLevel())) return false;
  if (mask_ && (entry.GetPropertyMask() & *mask_) == 0) return false;
  if (!takes_name(line) || !takes_writer(line.GetWriter())) return false;
  const bool needs_time = since_ || until_;
  if (needs_time && line.HasTime() && !takes_moment(entry.GetTimestamp(true).unix_seconds())) return false;
  if (where_ && !where_->holds(line)) return false;
  if (needs_time && !line.HasTime()) {
    ++without_time_;
    return false;
  }
  return true;
}

bool EntryChoice::takes_loss(const qz_LOG_EntryLine& line) const {
  if (!takes_writer(line.GetWriter())) return false;
  const std::optional<long long> written = since_ ? written_moment(line.GetWritten()) : std::nullopt;
  if (written && *written < *since_) return false;
  for (std::size_t index = 0; index < line.GetLostCount(); ++index) {
    if (takes_lost(line.GetLost(index))) return true;
  }
  return false;
}

bool EntryChoice::takes_lost(const qz_LOG_LostEntries& lost) const {
  if (!takes_id(lost.id) || !levels_.holds(lost.level) || refused_events_.holds(lost.id)) return false;
  if (losses_ && (!losses_->levels.holds(lost.level) || refused_losses_.holds(lost.id))) return false;
  const std::optional<long long> first = until_ ? written_moment(lost.since) : std::nullopt;
  return !first || *first <= *until_;
}

bool EntryChoice::takes_name(const qz_LOG_EntryLine& line) const {
  if (names_.empty()) return true;
  const std::string_view name = event_name(line, known_.find_name(line.GetEntry().GetEntryID()));
  return !name.empty() && any_matches(names_, name);
}

bool EntryChoice::takes_writer(std::string_view writer) const {
  return writers_.empty() || (!writer.empty() && any_matches(writers_, writer));
}

// Lines without a number cannot be told apart from others: they are all kept.
bool EntryChoice::is_new(const qz_LOG_EntryLine& line) {
  if (!seen_ || !line.HasSeq() || line.GetWriter()[0] == '\0') return true;
  return seen_->add(line.GetWriter(), line.GetSeq());
}

bool EntryChoice::TakesLine(const char* text, std::size_t length) {
  const RawLine line({text, length});
  if (!line.time().empty()) {
    if (since_ && line.time() < since_text_) return false;
    if (until_ && line.time() > until_text_) return false;
  }
  if (line.has_level() && !levels_.holds(line.level())) return false;
  if (line.has_id() && (!takes_id(line.id()) || refused_events_.holds(line.id()))) return false;
  if (line.has_writer() && !takes_writer(line.writer())) return false;
  return !where_ || where_->may_hold(line);
}

}  // namespace qzlog_tool
