#ifndef QZLOG_SINKS_STREAM_LOCK_H
#define QZLOG_SINKS_STREAM_LOCK_H

#include <atomic>
#include <cstdint>

#include "foundation/no_copies.h"

namespace qzlog {

/// One holder, who may hold it for long: as long as a pipe's reader does not read. So nobody waits for it without a
/// bound, and a fork does not wait for it at all: what a forked process finds held by its parent it takes.
class StreamLock : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Waits until SinkClock::steady_milliseconds() reaches `deadline`. False when it was still held then.
  bool lock(long long deadline) noexcept;
  void unlock() noexcept;

 private:
  bool wait_and_lock(std::uint32_t self, long long deadline) noexcept;
  bool try_lock(std::uint32_t self, std::uint32_t& seen) noexcept;

  std::atomic<std::uint32_t> holder_{0};  // the process of the thread that holds it
  std::atomic<std::uint32_t> waiting_{0};
};

/// Holds it as long as it lives, if it could be had.
class StreamHold : public qz_UTIL_no_inadvertant_copies {
 public:
  StreamHold(StreamLock& lock, long long deadline) : lock_(lock), is_held_(lock.lock(deadline)) {}
  ~StreamHold() {
    if (is_held_) lock_.unlock();
  }
  explicit operator bool() const { return is_held_; }

 private:
  StreamLock& lock_;
  bool is_held_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_STREAM_LOCK_H
