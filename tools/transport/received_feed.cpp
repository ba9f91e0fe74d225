#include "tools/transport/received_feed.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "tools/system/command_error.h"

namespace qzlog_tool {

ReceivedFeed::ReceivedFeed(Settings settings, Parts parts)
    : settings_(std::move(settings)), parts_(std::move(parts)), back_off_(settings_.back_off) {}

ReceivedFeed::State ReceivedFeed::next() {
  std::string reason;
  read_ = {};
  const qzlog_outcome outcome = parts_.reader.read(settings_.read_timeout, read_, reason);
  if (outcome == QZLOG_NEVER) throw CommandError(kExitCannotRun, settings_.from + ": " + reason);
  if (outcome == QZLOG_LATER) return fail(reason);
  back_off_.reset();
  if (!std::exchange(told_, "").empty()) parts_.warn(settings_.from + ": entries are read again");
  if (!read_.records.empty()) return State::kRecords;
  return read_.at_end ? State::kEnd : State::kNothing;
}

ReceivedFeed::State ReceivedFeed::fail(const std::string& reason) {
  read_ = {};
  warn_once(reason + "; it is tried again");
  rest(back_off_.next());
  return State::kNothing;
}

void ReceivedFeed::warn_once(const std::string& text) {
  if (std::exchange(told_, text) != text) parts_.warn(settings_.from + ": " + text);
}

void ReceivedFeed::settle(std::span<const std::uint64_t> tokens) {
  if (tokens.empty()) return;
  std::string reason;
  BackOff back_off(settings_.back_off);
  for (int attempt = 1;; ++attempt) {
    const qzlog_outcome outcome = parts_.reader.settle(tokens, settings_.settle_timeout, reason);
    if (outcome == QZLOG_DONE) return;
    if (outcome == QZLOG_NEVER) throw CommandError(kExitCannotRun, settings_.from + ": " + reason);
    if (attempt == settings_.settle_attempts) break;
    rest(back_off.next());
  }
  warn_once(reason + "; what was read last comes again");
}

/// Ends early when the command is asked to end meanwhile.
void ReceivedFeed::rest(Milliseconds time) const {
  constexpr Milliseconds kLongest{250};
  const auto end = std::chrono::steady_clock::now() + time;
  for (Milliseconds left = time; left > Milliseconds(0) && !parts_.is_ending();
       left = std::chrono::ceil<Milliseconds>(end - std::chrono::steady_clock::now())) {
    ::poll(nullptr, 0, static_cast<int>(std::min(left, kLongest).count()));
  }
}

}  // namespace qzlog_tool
