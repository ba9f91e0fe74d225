#include "qzlog/split_sink.h"

#include <algorithm>
#include <utility>

#include "sinks/setting_checks.h"
#include "sinks/sink_clock.h"

using namespace qzlog;

namespace {

/// So many milliseconds for several sinks together.
class SharedWait {
 public:
  explicit SharedWait(unsigned milliseconds) : deadline_(SinkClock::steady_milliseconds() + milliseconds) {}
  unsigned left() const { return static_cast<unsigned>(std::max(0LL, deadline_ - SinkClock::steady_milliseconds())); }

 private:
  const long long deadline_;
};

}  // namespace

qz_LOG_SplitSink::qz_LOG_SplitSink(std::vector<std::unique_ptr<qz_LOG_Sink>> sinks) : sinks_(std::move(sinks)) {
  with_memory([this] {
    if (sinks_.empty()) refuse_setting("sinks", "there is none");
    if (std::find(sinks_.begin(), sinks_.end(), nullptr) != sinks_.end()) refuse_setting("sinks", "one is null");
  });
}

qz_LOG_SplitSink::~qz_LOG_SplitSink() = default;

qz_LOG_Sink::Outcome qz_LOG_SplitSink::WriteEntry(const qz_LOG_LogEntry& entry, bool use_default,
                                                  unsigned selector_index, unsigned long long& /*bytes*/) {
  bool is_written = false;
  bool has_failed = false;
  for (const std::unique_ptr<qz_LOG_Sink>& sink : sinks_) {
    const Outcome outcome = HandOn(*sink, entry, use_default, selector_index);
    is_written = is_written || outcome == kWritten;
    has_failed = has_failed || outcome == kFailed;
  }
  if (has_failed) return kFailed;
  return is_written ? kWritten : kDropped;
}

bool qz_LOG_SplitSink::FlushEntries(unsigned milliseconds) {
  const SharedWait wait(milliseconds);
  bool is_done = true;
  for (const std::unique_ptr<qz_LOG_Sink>& sink : sinks_) is_done = sink->Flush(wait.left()) && is_done;
  return is_done;
}

unsigned long long qz_LOG_SplitSink::CloseEntries(unsigned milliseconds) {
  const SharedWait wait(milliseconds);
  unsigned long long left = 0;
  for (const std::unique_ptr<qz_LOG_Sink>& sink : sinks_) left += sink->Close(wait.left());
  return left;
}

/// Told to one at least: telling all of them again would double it. With a count of 0, whether each can be told.
bool qz_LOG_SplitSink::TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) {
  std::size_t told = 0;
  for (const std::unique_ptr<qz_LOG_Sink>& sink : sinks_) told += HandOnHeld(*sink, held, count) ? 1 : 0;
  return count == 0 ? told == sinks_.size() : told != 0;
}
