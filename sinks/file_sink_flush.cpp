#include <algorithm>

#include "sinks/file_sink_core.h"
#include "sinks/loss_body.h"
#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

constexpr long long kForever = 3'600'000;
constexpr long long kRetryMilliseconds = 20;

}  // namespace

void* FileSinkCore::run_thread(void* self) {
  const std::unique_ptr<std::shared_ptr<FileSinkCore>> core(static_cast<std::shared_ptr<FileSinkCore>*>(self));
  (*core)->run();
  return nullptr;
}

void FileSinkCore::run() {
  long long oldest = SinkClock::steady_milliseconds();  // a line may have waited since then
  while (!stop_asked_.load()) {
    const std::uint32_t ticket = work_.ticket();
    long long wait = 0;
    const Work work = look_for_work(oldest, wait);
    if (work == Work::kFlush) {
      oldest = SinkClock::steady_milliseconds();
      if (!flush_sealed()) work_.wait(work_.ticket(), kRetryMilliseconds);
      continue;
    }
    if (stop_asked_.load()) break;
    work_.wait(ticket, wait);
    if (work == Work::kNothing) oldest = SinkClock::steady_milliseconds();
  }
  flush_rest();
  finish();
}

FileSinkCore::Work FileSinkCore::look_for_work(long long oldest, long long& wait) {
  const bool is_asked = flush_asked_.load() || sync_asked_.load() > synced_.load();
  if (is_asked) sync_if_asked();
  const std::lock_guard putting(putting_);
  if (buffer_.has_sealed()) return Work::kFlush;
  if (buffer_.is_empty()) {
    flush_asked_.store(false);
    is_idle_ = true;
    wait = kForever;
    return Work::kNothing;
  }
  wait = oldest + settings_.longest_delay_milliseconds - SinkClock::steady_milliseconds();
  if (wait > 0 && !is_asked) return Work::kWait;
  flush_asked_.store(false);
  buffer_.seal();
  return Work::kFlush;
}

bool FileSinkCore::flush_sealed() {
  bool worked = false;
  {
    const std::lock_guard flushing(flushing_);
    worked = flush_sealed_with_files(false);
  }
  if (worked) {
    sync_if_asked();
    if (losses_.has_any()) tell_losses();
  }
  settle(worked);
  return worked;
}

bool FileSinkCore::flush_sealed_with_files(bool holds_putting) {
  std::unique_lock putting(putting_, std::defer_lock);
  if (!holds_putting) putting.lock();
  const std::string_view lines = buffer_.sealed_lines();
  if (!holds_putting) putting.unlock();
  if (lines.empty()) return true;
  const SeriesHold hold(destination_.lock());
  std::uint64_t end = 0;
  if (!destination_.prepare(hold, SinkClock::now(), lines.size()) || !destination_.get_end(end)) return false;
  buffer_.note(destination_.file().identity(), end);
  const std::size_t bytes = destination_.append(hold, lines);
  if (!holds_putting) putting.lock();
  if (bytes != 0) buffer_.take(bytes);
  flushed_.store(buffer_.flushed_seq());
  return bytes == lines.size();
}

void FileSinkCore::settle(bool worked) {
  working_.store(worked, std::memory_order_relaxed);
  space_.wake_all();
}

void FileSinkCore::sync_if_asked() {
  const std::uint64_t reached = flushed_.load();
  if (sync_asked_.load() <= synced_.load() || reached <= synced_.load()) return;
  {
    const std::lock_guard flushing(flushing_);
    destination_.sync();
  }
  synced_.store(reached);
  space_.wake_all();
}

/// Into the buffer, as a line among others.
void FileSinkCore::tell_losses() try {
  for (const LossBody& body : loss_bodies(losses_, settings_.lost_event_id, kRoomBefore)) {
    std::size_t bytes = 0;
    std::uint64_t seq = 0;
    const std::string_view text = std::string_view(body.text).substr(kRoomBefore);
    if (put(text, PendingBuffer::kNoLevel, bytes, seq) != Put::kDone) return;
    losses_.take(body.rows);
  }
} catch (...) {
  // Without memory, or while the event is not defined any more: told later.
}

void FileSinkCore::tell_losses_through(const SeriesHold& hold) try {
  for (LossBody& body : loss_bodies(losses_, settings_.lost_event_id, kRoomBefore)) {
    if (append_line(hold, body.text) == 0) return;
    losses_.take(body.rows);
  }
} catch (...) {
  // As above.
}

bool FileSinkCore::flush(unsigned milliseconds) {
  if (way_ == qz_LOG_FileSinkSettings::kWrite) {
    const std::lock_guard flushing(flushing_);
    if (is_closed_ || !losses_.has_any()) return true;
    const SeriesHold hold(destination_.lock());
    tell_losses_through(hold);
    return true;
  }
  const long long deadline = SinkClock::steady_milliseconds() + milliseconds;
  std::uint64_t last = 0;
  {
    const std::lock_guard putting(putting_);
    last = seq_;
    flush_asked_.store(true);
  }
  work_.wake_all();
  while (true) {
    const std::uint32_t ticket = space_.ticket();
    if (flushed_.load() >= last) return true;
    const long long left = deadline - SinkClock::steady_milliseconds();
    if (left <= 0 || is_done_.load()) return false;
    space_.wait(ticket, left);
  }
}

FileSinkCore::Left FileSinkCore::close(unsigned milliseconds) {
  const long long deadline = SinkClock::steady_milliseconds() + milliseconds;
  if (way_ == qz_LOG_FileSinkSettings::kWrite) {
    flush(milliseconds);
    finish();
    return {};
  }
  {
    const std::lock_guard putting(putting_);
    is_closed_ = true;
  }
  stop_by_.store(deadline);
  stop_asked_.store(true);
  work_.wake_all();
  while (true) {
    const std::uint32_t ticket = space_.ticket();
    const long long left = deadline - SinkClock::steady_milliseconds();
    if (is_done_.load() || left <= -kRetryMilliseconds) break;
    space_.wait(ticket, std::max(left, kRetryMilliseconds));
  }
  return count_left();
}

/// Until all is written, or the time is up.
void FileSinkCore::flush_rest() {
  bool told = false;
  while (true) {
    if (!seal_rest()) {
      if (told || !losses_.has_any()) return;
      tell_losses();
      told = true;
      continue;
    }
    if (flush_sealed()) continue;
    const long long left = stop_by_.load() - SinkClock::steady_milliseconds();
    if (left <= 0) return;
    work_.wait(work_.ticket(), std::min(left, kRetryMilliseconds));
  }
}

/// False when nothing is left.
bool FileSinkCore::seal_rest() {
  const std::lock_guard putting(putting_);
  if (buffer_.has_sealed()) return true;
  return !buffer_.is_empty() && buffer_.seal();
}

void FileSinkCore::finish() {
  const std::lock_guard flushing(flushing_);
  {
    const std::lock_guard putting(putting_);
    is_closed_ = true;
    if (!buffer_.has_sealed() && buffer_.is_empty()) buffer_.remove_file();
    buffer_.close();
  }
  destination_.close(settings_.longest_wait_milliseconds);
  is_done_.store(true);
  space_.wake_all();
}

FileSinkCore::Left FileSinkCore::count_left() const {
  const std::lock_guard putting(putting_);
  Left left;
  left.entries = buffer_.count_left(left.by_level, left.bytes);
  left.is_kept_for_next_open = way_ == qz_LOG_FileSinkSettings::kShared;
  return left;
}

}  // namespace qzlog
