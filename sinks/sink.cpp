#include "qzlog/sink.h"

#include "foundation/allocate.h"
#include "sinks/sink_counters.h"

using namespace qzlog;

qz_LOG_Sink::qz_LOG_Sink() : lowest_level_(0), wanted_mask_(kEveryMask), counters_(new_object<Counters>()) {}

qz_LOG_Sink::~qz_LOG_Sink() = default;

void qz_LOG_Sink::SetWanted(unsigned lowest_level, unsigned mask) noexcept {
  lowest_level_.store(lowest_level, std::memory_order_relaxed);
  wanted_mask_.store(mask, std::memory_order_relaxed);
}

bool qz_LOG_Sink::Write(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index) noexcept {
  return HandOn(*this, entry, use_default, selector_index) == kWritten;
}

qz_LOG_Sink::Outcome qz_LOG_Sink::HandOn(qz_LOG_Sink& sink, const qz_LOG_LogEntry& entry, bool use_default,
                                         unsigned selector_index) noexcept {
  const unsigned level = entry.GetLogLevel();
  Outcome outcome = kDropped;
  unsigned long long bytes = 0;
  if (sink.Wants(level, entry.GetPropertyMask())) {
    try {
      outcome = sink.WriteEntry(entry, use_default, selector_index, bytes);
    } catch (...) {
      outcome = kFailed;
    }
  }
  sink.counters_->count(outcome, level, outcome == kWritten ? bytes : 0);
  return outcome;
}

bool qz_LOG_Sink::TellHeld(const qz_LOG_HeldEntries* /*held*/, unsigned long /*count*/) { return false; }

bool qz_LOG_Sink::Flush(unsigned milliseconds) noexcept {
  try {
    return FlushEntries(milliseconds);
  } catch (...) {
    return false;
  }
}

unsigned long long qz_LOG_Sink::Close(unsigned milliseconds) noexcept {
  try {
    return CloseEntries(milliseconds);
  } catch (...) {
    return 1;
  }
}

qz_LOG_SinkCounts qz_LOG_Sink::GetCounts() const noexcept { return counters_->sum(); }

void qz_LOG_Sink::CountAsFailed(unsigned level, unsigned long long entries, unsigned long long bytes) noexcept {
  counters_->move_to_failed(level, entries, bytes);
}
