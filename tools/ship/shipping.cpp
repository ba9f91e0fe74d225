#include "tools/ship/shipping.h"

#include <poll.h>

#include <algorithm>
#include <span>
#include <utility>

#include "tools/report/command_message.h"
#include "tools/report/passed_over.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Severity;

/// So much is read at most of lines that nobody wants before anything else is done.
constexpr std::uint64_t kMostPassedBytes = std::uint64_t{16} << 20;
/// A letter has much more than a short line.
constexpr std::size_t kMostLetterBytes = std::size_t{16} << 20;

std::string_view view_of(const qzlog_text& text) { return {text.bytes, text.size}; }

}  // namespace

Shipping::Shipping(Settings settings, const Parts& parts)
    : settings_(std::move(settings)), parts_(parts), batch_(settings_.batch), back_off_(settings_.back_off) {}

Shipping::End Shipping::run() {
  settle();  // what cannot be written is to be known before anything is sent
  bool all_settled = true;
  while (all_settled && !is_ending()) {
    if (settings_.once) parts_.source.look_for_files();
    const bool all_read = parts_.source.read(*this);
    if (all_read) tell_missing();
    if (all_read) gather();
    const bool was_empty = batch_.is_empty();
    all_settled = deliver();
    if (settings_.once && all_read && was_empty) break;
    parts_.report(false);
    if (all_read && was_empty && !settings_.once) parts_.source.wait();
  }
  parts_.report(true);
  return {all_settled, all_read_, parts_.stop_signal()};
}

/// Once: what does not come up later was misspelt perhaps.
void Shipping::tell_missing() {
  if (std::exchange(has_looked_, true)) return;
  for (const std::string& text : parts_.source.missing()) {
    all_read_ = false;
    print_command_message(Severity::kWarning, text + (settings_.once ? "" : "; it is waited for"));
  }
}

// What comes in the meantime goes with it: a batch for each line would cost both sides more.
void Shipping::gather() {
  if (settings_.once || !batch_.has_records()) return;
  bool has_room = true;
  while (has_room && !is_ending()) {
    const auto age = std::chrono::duration_cast<Milliseconds>(Clock::now() - *begun_);
    if (age >= settings_.batch_wait) return;
    rest(std::min<Milliseconds>(settings_.batch_wait - age, Milliseconds(50)));
    has_room = parts_.source.read(*this);
  }
}

std::vector<LineVerdict> Shipping::judge(std::string_view block) {
  return parts_.judge != nullptr ? parts_.judge->judge(block) : std::vector<LineVerdict>();
}

/// However much is there that nobody wants, signals are heard and the state moves.
bool Shipping::must_pause() {
  return passed_bytes_ > kMostPassedBytes || parts_.dead_letters.held_bytes() > kMostLetterBytes || is_ending();
}

bool Shipping::take(std::string_view line, const LineVerdict& verdict, const ReadLine& at) {
  if (must_pause() || !batch_.has_room_for(line.size())) return false;
  ++parts_.metrics.read_lines;
  parts_.metrics.read_bytes += line.size();
  const bool is_object = finder_.find(line, line_parts_);
  parts_.identities.write(line, line_parts_, {at.file->path, at.begin}, identity_);
  if (is_object && verdict.is_wanted && verdict.fault.empty()) {
    if (!batch_.has_records()) begun_ = Clock::now();
    name_event();
    batch_.add(line, line_parts_, identity_, at);
    return true;
  }
  if (!verdict.fault.empty()) {
    add_dead_letter(verdict.fault, line, at);
  } else if (!is_object) {
    add_dead_letter("it is no whole JSON object", line, at);
  } else {
    ++parts_.metrics.passed_over;
  }
  passed_bytes_ += line.size();
  batch_.pass_over(identity_, at);
  return true;
}

// Where several definitions have other names for it, nobody knows which one is meant.
void Shipping::name_event() {
  if (!line_parts_.event.empty() || line_parts_.id == 0) return;
  const KnownEvent* const event = parts_.known.find_event(line_parts_.id);
  if (event != nullptr && event->names.size() == 1) line_parts_.event = event->names.front();
}

bool Shipping::take_long_line(const ReadLine& at) {
  if (must_pause()) return false;
  ++parts_.metrics.read_lines;
  parts_.metrics.read_bytes += at.end - at.begin;
  identity_.clear();
  add_dead_letter("it is longer than 16 MiB; its bytes are in its file alone", "", at);
  batch_.pass_over(identity_, at);
  return true;
}

void Shipping::add_dead_letter(std::string_view reason, std::string_view line, const ReadLine& at) {
  parts_.dead_letters.add({reason, identity_, at.file->path, at.begin, line});
  passed_over().add_at("line", "in the dead letters", at.file->path, at.begin);
  parts_.metrics.dead_letters = parts_.dead_letters.count();
}

void Shipping::warn(const std::string& text) { print_command_message(Severity::kWarning, text); }

void Shipping::complain(const std::string& text) {
  all_read_ = false;
  if (tell_error(text)) ++parts_.metrics.unreadable;
}

/// False where it was told before, or too much was.
bool Shipping::tell_error(const std::string& text) {
  constexpr std::size_t kMostTexts = 1000;
  if (complaints_.size() >= kMostTexts || !complaints_.insert(text).second) return false;
  print_command_message(Severity::kError, text);
  return true;
}

void Shipping::miss(const std::string& text) {
  ++parts_.metrics.missed;
  print_command_message(Severity::kWarning, text);
}

/// Sends the batch until all of it is settled. False where the command has to end before that.
bool Shipping::deliver() {
  passed_bytes_ = 0;
  if (batch_.is_empty()) return true;
  bool all_settled = true;
  try {
    all_settled = send_waiting();
  } catch (...) {
    settle();
    throw;
  }
  settle();
  return all_settled;
}

bool Shipping::send_waiting() {
  for (bool is_first = true;; is_first = false) {
    batch_.waiting(settings_.product, records_, numbers_);
    if (records_.empty()) return true;
    if (!is_first) parts_.metrics.sent_again += records_.size();
    results_.assign(records_.size(), qzlog_result{});
    std::string reason;
    ++parts_.metrics.batches;
    const qzlog_outcome outcome = parts_.sender.send(records_, time_for_attempt(), results_, reason);
    const bool some_settled = take_results();
    if (outcome == QZLOG_NEVER) throw CommandError(kExitCannotRun, settings_.to + ": " + reason);
    if (outcome == QZLOG_LATER) tell_failure(reason);
    if (outcome == QZLOG_DONE && some_settled) tell_success();
    if (some_settled) back_off_.reset();
    const bool is_away = outcome == QZLOG_LATER && !some_settled;
    batch_.waiting(settings_.product, records_, numbers_);
    if (records_.empty()) return true;
    if (must_give_up(is_away)) return false;
    const Milliseconds pause = back_off_.next();
    rest(end_by_ ? std::min(pause, time_for_attempt()) : pause);
    if (must_give_up(is_away)) return false;
  }
}

/// Whether something was settled.
bool Shipping::take_results() {
  bool some_settled = false;
  for (std::size_t index = 0; index < results_.size(); ++index) {
    if (results_[index].fate == QZLOG_AGAIN) continue;
    some_settled = true;
    settle_record(index);
  }
  if (some_settled) parts_.metrics.latest_acknowledgement = std::chrono::system_clock::now();
  return some_settled;
}

void Shipping::settle_record(std::size_t index) {
  const qzlog_record& record = records_[index];
  const qzlog_result& result = results_[index];
  if (result.fate == QZLOG_ACKNOWLEDGED || result.fate == QZLOG_DOUBLE) {
    ++parts_.metrics.acknowledged;
    parts_.metrics.acknowledged_bytes += record.line.size;
    if (result.fate == QZLOG_DOUBLE) ++parts_.metrics.doubles;
  } else {
    identity_ = view_of(record.identity);
    add_dead_letter(result.reason != nullptr ? result.reason : "the receiver refuses it", view_of(record.line),
                    batch_.place(numbers_[index]));
  }
  batch_.settle(numbers_[index]);
}

// Once, and not at each attempt.
void Shipping::tell_failure(const std::string& reason) {
  ++parts_.metrics.failures;
  parts_.metrics.is_connected = false;
  parts_.metrics.latest_failure = reason;
  if (reason == told_failure_) return;
  told_failure_ = reason;
  print_command_message(Severity::kWarning, settings_.to + ": " + reason + "; it is tried again");
}

void Shipping::tell_success() {
  parts_.metrics.is_connected = true;
  if (told_failure_.empty()) return;
  told_failure_.clear();
  print_command_message(Severity::kWarning, settings_.to + ": it takes lines again; delivery goes on");
}

// Dead letters are on the disk before the state says that nobody needs the lines.
void Shipping::settle() {
  if (parts_.dead_letters.sync()) {
    tell_error("lines are not delivered, and stand with their reasons in '" + parts_.dead_letters.path() + "'");
  }
  batch_.finish();
  begun_.reset();
  std::vector<SeriesState> places = parts_.source.places();
  if (places == written_) return;
  parts_.state.write({settings_.to, places});
  written_ = std::move(places);
}

/// Whether the rest of the batch is left to the next start: at once where the receiver is away, for it would be waited
/// for in vain most often.
bool Shipping::must_give_up(bool is_away) { return !has_time_left() || (is_ending() && is_away); }

/// False once the command was asked to end for so long that the last batch stays undelivered.
bool Shipping::has_time_left() {
  if (!is_ending()) return true;
  if (!end_by_) end_by_ = Clock::now() + settings_.end_wait;
  return Clock::now() < *end_by_;
}

Shipping::Milliseconds Shipping::time_for_attempt() {
  if (!has_time_left()) return Milliseconds(1);
  if (!end_by_) return settings_.send_timeout;
  const auto left = std::chrono::ceil<Milliseconds>(*end_by_ - Clock::now());
  return std::clamp(left, Milliseconds(1), settings_.send_timeout);
}

/// Ends early when the command is asked to end meanwhile.
void Shipping::rest(Milliseconds time) {
  constexpr Milliseconds kLongest{500};
  const bool was_ending = is_ending();
  const Clock::time_point end = Clock::now() + time;
  for (Milliseconds left = time; left > Milliseconds(0) && is_ending() == was_ending;
       left = std::chrono::ceil<Milliseconds>(end - Clock::now())) {
    ::poll(nullptr, 0, static_cast<int>(std::min(left, kLongest).count()));  // a signal ends it
    parts_.report(false);
  }
}

}  // namespace qzlog_tool
