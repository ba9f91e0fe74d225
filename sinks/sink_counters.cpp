#include "sinks/sink_counters.h"

#include <algorithm>
#include <bit>
#include <new>

#include "foundation/thread_instance.h"

namespace {

using qzlog::ThreadInstance;

/// Which places threads have of their own, one bit for each.
constinit std::atomic<unsigned> taken_places{0};

/// The place that a thread has in all sinks until it ends, or the one that is everybody's when there is none left. What
/// the former thread counted there is seen by the next one.
class OwnPlace {
 public:
  OwnPlace() noexcept {
    unsigned taken = taken_places.load(std::memory_order_relaxed);
    do {
      number_ = static_cast<unsigned>(std::countr_one(taken));
      if (number_ >= kSharedPlace) return;
    } while (!taken_places.compare_exchange_weak(taken, taken | 1U << number_, std::memory_order_acquire,
                                                 std::memory_order_relaxed));
  }
  ~OwnPlace() {
    if (number_ < kSharedPlace) taken_places.fetch_and(~(1U << number_), std::memory_order_release);
  }
  OwnPlace(const OwnPlace&) = delete;
  OwnPlace& operator=(const OwnPlace&) = delete;

  unsigned number() const { return number_; }
  static constexpr unsigned kSharedPlace = 15;

 private:
  unsigned number_;
};

/// Without memory, and in what still runs after the thread's end, it is everybody's.
[[gnu::noinline]] unsigned make_place_of_thread() noexcept {
  try {
    const OwnPlace* const made = ThreadInstance<OwnPlace>::make();
    return made != nullptr ? made->number() : OwnPlace::kSharedPlace;
  } catch (const std::bad_alloc&) {
    return OwnPlace::kSharedPlace;
  }
}

unsigned place_of_thread() noexcept {
  const OwnPlace* const own = ThreadInstance<OwnPlace>::find();
  return own != nullptr ? own->number() : make_place_of_thread();
}

/// Nobody else writes to a place that is a thread's own: what others read is whole all the same.
class Addition {
 public:
  explicit Addition(unsigned place) : is_shared_(place >= OwnPlace::kSharedPlace) {}
  void add(std::atomic<unsigned long long>& count, unsigned long long more) const noexcept {
    if (is_shared_) [[unlikely]] {
      count.fetch_add(more, std::memory_order_relaxed);
    } else {
      count.store(count.load(std::memory_order_relaxed) + more, std::memory_order_relaxed);
    }
  }

 private:
  bool is_shared_;
};

/// Entries have no level above 9; a sink of another's may still say so.
unsigned known_level(unsigned level) { return std::min<unsigned>(level, qz_LOG_SinkCounts::kLevels - 1); }

}  // namespace

void qz_LOG_Sink::Counters::count(Outcome outcome, unsigned level, unsigned long long bytes) noexcept {
  static_assert(OwnPlace::kSharedPlace < kPlaces);
  const unsigned number = place_of_thread();
  const Addition addition(number);
  Place& place = places_[number];
  addition.add(place.entries[outcome][known_level(level)], 1);
  if (bytes != 0) addition.add(place.bytes, bytes);
}

void qz_LOG_Sink::Counters::move_to_failed(unsigned level, unsigned long long entries,
                                           unsigned long long bytes) noexcept {
  const unsigned number = place_of_thread();
  const Addition addition(number);
  Place& place = places_[number];
  level = known_level(level);
  addition.add(place.entries[kWritten][level], 0 - entries);
  addition.add(place.entries[kFailed][level], entries);
  addition.add(place.bytes, 0 - bytes);
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
