#include "qzlog/limited_sink.h"

#include <utility>

#include "foundation/allocate.h"
#include "sinks/event_limits.h"
#include "sinks/held_lines.h"
#include "sinks/setting_checks.h"
#include "sinks/sink_clock.h"
#include "sinks/stream_lock.h"
#include "sinks/told_event.h"

using namespace qzlog;

class qz_LOG_LimitedSink::Limits {
 public:
  explicit Limits(unsigned most_per_second) : events(most_per_second) {}

  EventLimits events;
  StreamLock telling;
};

namespace {

void check(const qz_LOG_Sink* sink, const qz_LOG_LimitedSinkSettings& settings) {
  if (sink == nullptr) refuse_setting("sink", "it is null");
  require_range("entries_per_second", settings.entries_per_second, 1, 1'000'000'000);
  require_range("unlimited_level", settings.unlimited_level, 0, qz_LOG_LimitedSinkSettings::kNever);
  if (settings.held_event_id != 0) check_told_event(ToldOf::kHeld, settings.held_event_id);
}

}  // namespace

qz_LOG_LimitedSink::qz_LOG_LimitedSink(std::unique_ptr<qz_LOG_Sink> sink, const qz_LOG_LimitedSinkSettings& settings)
    : sink_(std::move(sink)),
      settings_(settings),
      limits_((with_memory([&] { check(sink_.get(), settings); }), new_object<Limits>(settings.entries_per_second))) {
  if (settings.held_event_id != 0 || HandOnHeld(*sink_, nullptr, 0)) return;
  with_memory([] { refuse_setting("held_event_id", "the inner sink can be told by an entry only"); });
}

qz_LOG_LimitedSink::~qz_LOG_LimitedSink() { TellAllHeld(true); }

qz_LOG_Sink::Outcome qz_LOG_LimitedSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                    unsigned selector_index, unsigned long long& /*bytes*/) {
  const std::timespec now = SinkClock::now();
  if (limits_->events.is_due(now)) TellAllHeld(false);
  const unsigned level = entry.GetLogLevel();
  const bool is_limited = level < settings_.unlimited_level;
  if (is_limited && !limits_->events.admit(entry.GetEntryID(), level, now)) return kDropped;
  return HandOn(*sink_, entry, use_default, selector_index);
}

/// One thread at a time; others go on with their entries. What cannot be told is tried again in the next second.
void qz_LOG_LimitedSink::TellAllHeld(bool everything) noexcept {
  const StreamHold hold(limits_->telling, 0);
  if (!hold || !limits_->events.has_held()) return;
  bool is_told = false;
  try {
    is_told = TellRows(everything);
  } catch (...) {  // NOLINT(bugprone-empty-catch): there is no memory
  }
  if (!is_told) limits_->events.keep_due(SinkClock::now());
}

/// Tells what can be told, and forgets that. False when something is left.
bool qz_LOG_LimitedSink::TellRows(bool everything) {
  EventLimits& events = limits_->events;
  const auto which = everything ? EventLimits::Which::kAll : EventLimits::Which::kOfOtherSeconds;
  const std::vector<EventLimits::Row> rows = events.rows(which, SinkClock::now());
  const bool by_line = settings_.held_event_id == 0;
  if (by_line && !rows.empty() && !HandOnHeld(*sink_, held_of(rows).data(), rows.size())) return false;
  bool is_all_told = true;
  for (const EventLimits::Row& row : rows) {
    const bool is_told =
        by_line || HandOn(*sink_, told_entry(ToldOf::kHeld, settings_.held_event_id, row), false, 0) != kFailed;
    if (is_told) events.take(row);
    is_all_told = is_all_told && is_told;
  }
  return is_all_told;
}

bool qz_LOG_LimitedSink::FlushEntries(unsigned milliseconds) {
  TellAllHeld(true);
  return sink_->Flush(milliseconds) && !limits_->events.has_held();
}

unsigned long long qz_LOG_LimitedSink::CloseEntries(unsigned milliseconds) {
  TellAllHeld(true);
  return sink_->Close(milliseconds);
}

bool qz_LOG_LimitedSink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  return HandOnHeld(*sink_, held, count);
}
