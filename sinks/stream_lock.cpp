#include "sinks/stream_lock.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));

/// Until it is woken, or for so long, unless the word has another value. May end early.
void wait_for_change(std::atomic<std::uint32_t>& word, std::uint32_t value, long long milliseconds) {
  const std::timespec bound = {static_cast<std::time_t>(milliseconds / 1000),
                               static_cast<long>(milliseconds % 1000 * 1'000'000)};
  syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, &bound, nullptr, 0);
}

void wake_one(std::atomic<std::uint32_t>& word) {
  syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace

bool StreamLock::try_lock(std::uint32_t self, std::uint32_t& seen) noexcept {
  seen = 0;
  if (holder_.compare_exchange_strong(seen, self)) return true;
  return seen != self && holder_.compare_exchange_strong(seen, self);
}

bool StreamLock::lock(long long deadline) noexcept {
  const auto self = static_cast<std::uint32_t>(getpid());
  std::uint32_t seen = 0;
  return try_lock(self, seen) || wait_and_lock(self, deadline);
}

/// Who unlocks looks for waiting threads afterwards, and these announce themselves before they look: one of the two
/// sees the other.
bool StreamLock::wait_and_lock(std::uint32_t self, long long deadline) noexcept {
  waiting_.fetch_add(1);
  bool is_locked = false;
  for (;;) {
    std::uint32_t seen = 0;
    is_locked = try_lock(self, seen);
    const long long left = is_locked ? 0 : deadline - SinkClock::steady_milliseconds();
    if (left <= 0) break;
    wait_for_change(holder_, seen, left);
  }
  waiting_.fetch_sub(1);
  return is_locked;
}

void StreamLock::unlock() noexcept {
  holder_.store(0);
  if (waiting_.load() != 0) wake_one(holder_);
}

}  // namespace qzlog
