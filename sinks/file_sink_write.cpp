#include <cstring>

#include "sinks/file_sink_core.h"
#include "sinks/sink_clock.h"

namespace qzlog {

std::size_t FileSinkCore::write(std::string& text, unsigned level) {
  if (way_ == qz_LOG_FileSinkSettings::kWrite) return write_through(text, level);
  return write_buffered(text, level);
}

std::size_t FileSinkCore::write_through(std::string& text, unsigned level) {
  const std::lock_guard flushing(flushing_);
  if (is_closed_) return 0;
  const SeriesHold hold(destination_.lock());
  const std::size_t bytes = append_line(hold, text);
  working_.store(bytes != 0, std::memory_order_relaxed);
  if (bytes == 0) return 0;
  if (level >= settings_.sync_level) destination_.sync();
  if (losses_.has_any()) [[unlikely]]
    tell_losses_through(hold);
  return bytes;
}

/// 0 when the file does not have the line.
std::size_t FileSinkCore::append_line(const SeriesHold& hold, std::string& text) {
  const std::timespec now = SinkClock::now();
  text += '\n';
  if (!destination_.prepare(hold, now, text.size())) return 0;
  const char* const line = write_head_before(text.data() + kRoomBefore, now);
  const std::string_view whole(line, static_cast<std::size_t>(text.data() + text.size() - line));
  if (destination_.append(hold, whole) != whole.size()) return 0;
  ++seq_;
  return whole.size();
}

std::size_t FileSinkCore::write_buffered(std::string& text, unsigned level) {
  const std::string_view body = std::string_view(text).substr(kRoomBefore);
  long long deadline = 0;
  while (true) {
    const std::uint32_t ticket = space_.ticket();
    std::size_t bytes = 0;
    std::uint64_t seq = 0;
    switch (put(body, level, bytes, seq)) {
      case Put::kDone:
        if (level >= settings_.sync_level) [[unlikely]]
          wait_until_synced(seq);
        return bytes;
      case Put::kTooLong:
        return write_past_buffer(text, level);
      case Put::kClosed:
        return 0;
      case Put::kFull:
        if (!wait_for_room(ticket, deadline)) return 0;
    }
  }
}

/// Nobody waits while writing does not work, or has not worked for as long as one may wait.
bool FileSinkCore::wait_for_room(std::uint32_t ticket, long long& deadline) {
  if (!working_.load(std::memory_order_relaxed)) return false;
  const long long now = SinkClock::steady_milliseconds();
  if (deadline == 0) deadline = now + settings_.longest_wait_milliseconds;
  if (now >= deadline) {
    working_.store(false, std::memory_order_relaxed);
    return false;
  }
  space_.wait(ticket, deadline - now);
  return true;
}

FileSinkCore::Put FileSinkCore::put(std::string_view body, unsigned level, std::size_t& bytes, std::uint64_t& seq) {
  bool wakes = false;
  const std::size_t room = kRoomBefore + body.size() + 1;
  {
    const std::lock_guard putting(putting_);
    // What was lost is still told when no entry is taken any more.
    if (is_closed_ && level != PendingBuffer::kNoLevel) return Put::kClosed;
    char* place = buffer_.room(room);
    if (place == nullptr) [[unlikely]] {
      if (room + PendingBuffer::kShortestLine > buffer_.half_bytes()) return Put::kTooLong;
      if (!buffer_.seal()) return Put::kFull;
      wakes = true;
      place = buffer_.room(room);
    }
    put_at(place, body, level, bytes);
    seq = seq_;
    if (is_idle_) wakes = true, is_idle_ = false;
  }
  if (wakes) work_.wake_all();
  return Put::kDone;
}

void FileSinkCore::put_at(char* place, std::string_view body, unsigned level, std::size_t& bytes) {
  char* const end = write_head(place, SinkClock::now());
  std::memcpy(end, body.data(), body.size());
  end[body.size()] = '\n';
  bytes = static_cast<std::size_t>(end - place) + body.size() + 1;
  buffer_.commit(bytes, ++seq_, level);
}

/// Of the next line.
char* FileSinkCore::write_head(char* place, const std::timespec& now) noexcept {
  return lines_ == Lines::kNumbered ? envelope_.write_head(place, seq_ + 1, now) : place;
}

char* FileSinkCore::write_head_before(char* body, const std::timespec& now) noexcept {
  return lines_ == Lines::kNumbered ? envelope_.write_head_before(body, seq_ + 1, now) : body;
}

/// What waits goes first. Others wait meanwhile: the order of the lines is the order of their numbers.
std::size_t FileSinkCore::write_past_buffer(std::string& text, unsigned level) {
  const std::lock_guard flushing(flushing_);
  const std::lock_guard putting(putting_);
  if (is_closed_) return 0;
  while (buffer_.has_sealed() || !buffer_.is_empty()) {
    if (!buffer_.has_sealed()) buffer_.seal();
    if (!flush_sealed_with_files(true)) return 0;
  }
  const SeriesHold hold(destination_.lock());
  const std::size_t bytes = append_line(hold, text);
  if (bytes != 0) flushed_.store(seq_);
  if (bytes != 0 && level >= settings_.sync_level) destination_.sync();
  settle(bytes != 0);
  return bytes;
}

void FileSinkCore::wait_until_synced(std::uint64_t seq) {
  std::uint64_t asked = sync_asked_.load();
  while (asked < seq && !sync_asked_.compare_exchange_weak(asked, seq)) {
  }
  const long long deadline = SinkClock::steady_milliseconds() + settings_.longest_wait_milliseconds;
  work_.wake_all();
  while (true) {
    const std::uint32_t ticket = space_.ticket();
    const long long left = deadline - SinkClock::steady_milliseconds();
    if (synced_.load() >= seq) return;
    if (left <= 0 || !working_.load(std::memory_order_relaxed)) break;
    space_.wait(ticket, left);
  }
  syncs_given_up_.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace qzlog
