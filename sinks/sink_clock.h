#ifndef QZLOG_SINKS_SINK_CLOCK_H
#define QZLOG_SINKS_SINK_CLOCK_H

#include <atomic>
#include <ctime>

namespace qzlog {

/// What time sinks take it to be. Tests put another clock in its place.
class SinkClock {
 public:
  using Read = std::timespec (*)();

  static std::timespec now() noexcept {
    const Read read = read_.load(std::memory_order_relaxed);
    if (read != nullptr) [[unlikely]]
      return read();
    std::timespec time = {};
    clock_gettime(CLOCK_REALTIME, &time);
    return time;
  }
  /// Milliseconds of a clock that nobody sets, for waiting.
  static long long steady_milliseconds() noexcept {
    std::timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<long long>(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
  }
  /// Null for the system's.
  static void replace(Read read) noexcept { read_.store(read, std::memory_order_relaxed); }

 private:
  static inline constinit std::atomic<Read> read_{nullptr};
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SINK_CLOCK_H
