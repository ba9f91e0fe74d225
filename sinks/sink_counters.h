#ifndef QZLOG_SINKS_SINK_COUNTERS_H
#define QZLOG_SINKS_SINK_COUNTERS_H

#include <atomic>

#include "foundation/cache_line.h"
#include "qzlog/sink.h"

/// The counts of a sink. Threads count in different places, so that they neither take cache lines from each other nor
/// need locked instructions; only where there are more threads than places some share one.
class qz_LOG_Sink::Counters {
 public:
  void count(Outcome outcome, unsigned level, unsigned long long bytes) noexcept;
  void move_to_failed(unsigned level, unsigned long long entries, unsigned long long bytes) noexcept;
  qz_LOG_SinkCounts sum() const noexcept;

 private:
  static constexpr unsigned kPlaces = 16;
  static constexpr unsigned kOutcomes = 3;

  /// A sum of all is right modulo 2^64, also where one alone went below zero.
  struct alignas(qzlog::kCacheLine) Place {
    std::atomic<unsigned long long> bytes{0};
    std::atomic<unsigned long long> entries[kOutcomes][qz_LOG_SinkCounts::kLevels] = {};
  };

  Place places_[kPlaces];
};

#endif  // QZLOG_SINKS_SINK_COUNTERS_H
