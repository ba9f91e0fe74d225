#ifndef QZLOG_SINKS_EVENT_LIMITS_H
#define QZLOG_SINKS_EVENT_LIMITS_H

#include <atomic>
#include <ctime>
#include <vector>

#include "foundation/cache_line.h"
#include "foundation/locks.h"
#include "foundation/no_copies.h"
#include "sinks/loss_table.h"
#include "sinks/process_check.h"

namespace qzlog {

/// Counts the entries of each event in each second, and those over a limit until somebody has been told. Any thread;
/// threads with different events mostly take different locks. Needs no memory but its own.
class EventLimits : public qz_UTIL_no_inadvertant_copies {
 public:
  using Row = LossTable::Row;  ///< the highest level, the number and the first time of what an event held back

  explicit EventLimits(unsigned most_per_second) : most_per_second_(most_per_second) {}

  /// Whether an entry is within its event's limit. Otherwise it counts as held back.
  bool admit(unsigned id, unsigned level, const std::timespec& now) noexcept;

  /// Whether something was held back in another second than this one.
  bool is_due(const std::timespec& now) const noexcept {
    return has_held_.load(std::memory_order_relaxed) && held_second_.load(std::memory_order_relaxed) != now.tv_sec;
  }
  bool has_held() const noexcept { return has_held_.load(); }

  enum class Which { kOfOtherSeconds, kAll };
  /// What was held back, by ID. For one thread at a time: the rows stay until take() is called with them, and
  /// has_held() is false until more is held back, or keep_due() is called. std::bad_alloc.
  std::vector<Row> rows(Which which, const std::timespec& now);
  void take(const Row& row) noexcept;
  /// What was not told is due again in the next second.
  void keep_due(const std::timespec& now) noexcept {
    held_second_.store(now.tv_sec, std::memory_order_relaxed);
    has_held_.store(true);
  }

 private:
  struct Event {
    unsigned id = 0;
    unsigned passed = 0;
    std::time_t second = 0;
    bool is_used = false;
    Row held = {};
  };
  static constexpr unsigned kEventsTogether = 16;
  static constexpr unsigned kPlaces = 64;
  struct alignas(kCacheLine) Place {
    Mutex mutex;
    Event events[kEventsTogether];
  };

  Place& place_of(unsigned id) noexcept;
  static Event* find(Place& place, unsigned id) noexcept;
  static Event* find_or_make(Place& place, unsigned id, std::time_t second) noexcept;
  void hold_back(Event& event, unsigned level, const std::timespec& now) noexcept;
  void leave_to_parent() noexcept;

  const unsigned most_per_second_;
  ProcessCheck process_;
  alignas(kCacheLine) std::atomic<bool> has_held_{false};
  std::atomic<std::time_t> held_second_{0};
  Place places_[kPlaces];
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_EVENT_LIMITS_H
