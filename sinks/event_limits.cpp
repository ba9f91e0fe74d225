#include "sinks/event_limits.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

namespace qzlog {

EventLimits::Place& EventLimits::place_of(unsigned id) noexcept {
  // IDs often differ in their last digits only, or by multiples of a power of two.
  const std::uint32_t mixed = static_cast<std::uint32_t>(id) * 0x9E3779B1U;
  return places_[mixed >> 26];
}

EventLimits::Event* EventLimits::find(Place& place, unsigned id) noexcept {
  Event* const end = std::end(place.events);
  Event* const found =
      std::find_if(place.events, end, [id](const Event& event) { return event.is_used && event.id == id; });
  return found != end ? found : nullptr;
}

/// Null when all places are taken by events that still matter.
EventLimits::Event* EventLimits::find_or_make(Place& place, unsigned id, std::time_t second) noexcept {
  if (Event* const event = find(place, id)) return event;
  Event* const end = std::end(place.events);
  Event* const free = std::find_if(place.events, end, [second](const Event& event) {
    return !event.is_used || (event.second != second && event.held.count == 0);
  });
  if (free == end) return nullptr;
  *free = Event();
  free->id = id;
  free->second = second;
  free->is_used = true;
  return free;
}

bool EventLimits::admit(unsigned id, unsigned level, const std::timespec& now) noexcept {
  Place& place = place_of(id);
  {
    const MutexSentry hold(place.mutex);
    Event* const event = find_or_make(place, id, now.tv_sec);
    if (event == nullptr) return true;
    if (event->second != now.tv_sec) {
      event->second = now.tv_sec;
      event->passed = 0;
    }
    if (event->passed < most_per_second_) {
      ++event->passed;
      return true;
    }
  }
  if (process_.is_new_process()) leave_to_parent();
  const MutexSentry hold(place.mutex);
  Event* const event = find_or_make(place, id, now.tv_sec);
  if (event == nullptr) return true;
  hold_back(*event, level, now);
  return false;
}

void EventLimits::hold_back(Event& event, unsigned level, const std::timespec& now) noexcept {
  Row& held = event.held;
  if (held.count == 0) {
    held = {event.id, level, 1, now};
  } else {
    held.level = std::max(held.level, level);
    if (held.count != std::numeric_limits<unsigned>::max()) ++held.count;
  }
  keep_due(now);
}

/// What was held back before a fork is told by the parent.
void EventLimits::leave_to_parent() noexcept {
  for (Place& place : places_) {
    const MutexSentry hold(place.mutex);
    for (Event& event : place.events) event.held.count = 0;
  }
}

std::vector<EventLimits::Row> EventLimits::rows(Which which, const std::timespec& now) {
  if (process_.is_new_process()) leave_to_parent();
  std::vector<Row> rows;
  has_held_.store(false);
  for (Place& place : places_) {
    const MutexSentry hold(place.mutex);
    for (const Event& event : place.events) {
      if (event.held.count == 0) continue;
      if (which == Which::kAll || event.held.since.tv_sec != now.tv_sec) {
        rows.push_back(event.held);
      } else {
        keep_due(now);
      }
    }
  }
  std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.id < b.id; });
  return rows;
}

/// What was held back meanwhile is told the next time, as if it had begun now.
void EventLimits::take(const Row& row) noexcept {
  Place& place = place_of(row.id);
  const MutexSentry hold(place.mutex);
  Event* const event = find(place, row.id);
  if (event != nullptr) event->held.count -= std::min(event->held.count, row.count);
}

}  // namespace qzlog
