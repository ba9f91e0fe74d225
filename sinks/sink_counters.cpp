#include "sinks/sink_counters.h"

#include <algorithm>

namespace {

constexpr unsigned kNoPlace = ~0U;
constinit std::atomic<unsigned> threads{0};
constinit thread_local unsigned place_of_thread = kNoPlace;

/// Entries have no level above 9; a sink of another's may still say so.
unsigned known_level(unsigned level) { return std::min<unsigned>(level, qz_LOG_SinkCounts::kLevels - 1); }

}  // namespace

qz_LOG_Sink::Counters::Place& qz_LOG_Sink::Counters::own_place() noexcept {
  if (place_of_thread == kNoPlace) place_of_thread = threads.fetch_add(1, std::memory_order_relaxed) % kPlaces;
  return places_[place_of_thread];
}

void qz_LOG_Sink::Counters::count(Outcome outcome, unsigned level, unsigned long long bytes) noexcept {
  Place& place = own_place();
  place.entries[outcome][known_level(level)].fetch_add(1, std::memory_order_relaxed);
  if (bytes != 0) place.bytes.fetch_add(bytes, std::memory_order_relaxed);
}

void qz_LOG_Sink::Counters::move_to_failed(unsigned level, unsigned long long entries,
                                           unsigned long long bytes) noexcept {
  Place& place = own_place();
  level = known_level(level);
  place.entries[kWritten][level].fetch_sub(entries, std::memory_order_relaxed);
  place.entries[kFailed][level].fetch_add(entries, std::memory_order_relaxed);
  place.bytes.fetch_sub(bytes, std::memory_order_relaxed);
}

qz_LOG_SinkCounts qz_LOG_Sink::Counters::sum() const noexcept {
  qz_LOG_SinkCounts counts = {};
  for (const Place& place : places_) {
    counts.bytes += place.bytes.load(std::memory_order_relaxed);
    for (unsigned level = 0; level < qz_LOG_SinkCounts::kLevels; ++level) {
      counts.written_by_level[level] += place.entries[kWritten][level].load(std::memory_order_relaxed);
      counts.failed_by_level[level] += place.entries[kFailed][level].load(std::memory_order_relaxed);
      counts.dropped_by_level[level] += place.entries[kDropped][level].load(std::memory_order_relaxed);
    }
  }
  for (unsigned level = 0; level < qz_LOG_SinkCounts::kLevels; ++level) {
    counts.written += counts.written_by_level[level];
    counts.failed += counts.failed_by_level[level];
    counts.dropped += counts.dropped_by_level[level];
  }
  return counts;
}
