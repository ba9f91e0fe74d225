#include "sinks/syslog_core.h"

#include "sinks/sink_clock.h"
#include "sinks/writer_name.h"

namespace qzlog {

std::shared_ptr<SyslogCore> SyslogCore::open(const qz_LOG_SyslogSinkSettings& settings, LostMessages& failures) {
  auto core = std::make_shared<SyslogCore>(settings, failures);
  ForkRegistry::add(*core);
  return core;
}

SyslogCore::SyslogCore(const qz_LOG_SyslogSinkSettings& settings, LostMessages& failures)
    : settings_(settings),
      failures_(failures),
      envelope_(new_writer_name()),
      message_(settings),
      connection_(settings, *this) {}

SyslogCore::~SyslogCore() { ForkRegistry::remove(*this); }

std::size_t SyslogCore::write(const SyslogParts& parts) {
  const long long now = SinkClock::steady_milliseconds();
  const long long deadline = now + settings_.longest_wait_milliseconds;
  std::size_t bytes = 0;
  {
    const StreamHold hold(lock_, deadline);
    if (is_closed_.load(std::memory_order_relaxed)) return 0;
    if (hold) bytes = write_locked(parts, connection_.is_stalled() ? now : deadline);
  }
  if (bytes == 0) note_loss(parts.id, parts.level);
  return bytes;
}

std::size_t SyslogCore::write_locked(const SyslogParts& parts, long long deadline) {
  if (!connection_.open(deadline)) return 0;
  if (losses_.has_any()) tell_losses(deadline);
  return send(parts, 0, deadline);
}

/// Only what was taken has a number: there are no gaps but where messages are lost on their way.
std::size_t SyslogCore::send(const SyslogParts& parts, unsigned told, long long deadline) {
  const std::timespec now = SinkClock::now();
  char head[LineEnvelope::kMaxHead];
  const char* const head_end = envelope_.write_head(head, seq_ + 1, now);
  const std::string_view bytes = message_.make(parts, {head, static_cast<std::size_t>(head_end - head)}, now);
  if (!connection_.send(bytes, {parts.id, parts.level, told, bytes.size()}, deadline)) return 0;
  ++seq_;
  count_shortened();
  return bytes.size();
}

void SyslogCore::count_shortened() {
  if (!message_.is_shortened()) return;
  ++shortened_;
  if (settings_.entries && !message_.fit().has_entry) ++without_entry_;
}

bool SyslogCore::tell(ToldOf kind, const LossTable::Row& row, long long deadline) {
  make_syslog_parts(kind, row, settings_.entries ? SyslogData::kEntry : SyslogData::kNone, told_parts_);
  return send(told_parts_, row.count, deadline) != 0;
}

/// Telling must not keep the entry from being sent, and waits for no memory: the next one tells as well.
void SyslogCore::tell_losses(long long deadline) noexcept {
  try {
    for (const LossTable::Row& row : losses_.rows()) {
      if (!tell(ToldOf::kLost, row, deadline)) return;
      losses_.take({row});
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch): the next message tries again
  }
}

bool SyslogCore::tell_held(const std::vector<LossTable::Row>& rows) {
  const long long deadline = SinkClock::steady_milliseconds() + settings_.longest_wait_milliseconds;
  const StreamHold hold(lock_, deadline);
  if (!hold || is_closed_.load(std::memory_order_relaxed) || !connection_.open(deadline)) return false;
  for (const LossTable::Row& row : rows) {
    if (!tell(ToldOf::kHeld, row, deadline)) return false;
  }
  return true;
}

void SyslogCore::note_loss(unsigned id, unsigned level) noexcept { losses_.add(id, level, SinkClock::now()); }

void SyslogCore::message_lost(const SentMessage& message) noexcept {
  losses_.add(message.id, message.level, SinkClock::now(), message.told != 0 ? message.told : 1);
  if (message.told != 0) return;
  ++refused_;
  failures_.message_lost(message);
}

bool SyslogCore::flush(unsigned milliseconds) {
  const long long deadline = SinkClock::steady_milliseconds() + milliseconds;
  const StreamHold hold(lock_, deadline);
  if (!hold) return false;
  if (is_closed_.load(std::memory_order_relaxed)) return true;
  if (losses_.has_any() && connection_.open(deadline)) tell_losses(deadline);
  return connection_.flush(deadline);
}

unsigned long long SyslogCore::close(unsigned milliseconds) {
  const long long deadline = SinkClock::steady_milliseconds() + milliseconds;
  const bool was_closed = is_closed_.exchange(true);
  const StreamHold hold(lock_, deadline);
  if (!hold) return 1;  // an entry is being sent
  if (was_closed) return 0;
  if (losses_.has_any() && connection_.open(deadline)) tell_losses(deadline);
  return connection_.close(deadline);
}

/// A connection is not waited for: what it did last is what there is to know.
qz_LOG_SyslogSinkStatus SyslogCore::status() const {
  const StreamHold hold(lock_, SinkClock::steady_milliseconds() + settings_.longest_wait_milliseconds);
  if (!hold) return {false, 0, 0, 0, 0, "it is waiting for the server"};
  return {connection_.is_up(), connection_.connections(), shortened_, without_entry_, refused_, connection_.failure()};
}

}  // namespace qzlog
