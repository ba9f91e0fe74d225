#include "foundation/local_zone.h"

#include <cstdint>
#include <ctime>

#include "foundation/fork_gate.h"

namespace qzlog {

namespace {

// Zones change at full quarters of an hour, but for some long ago; what changes within one is not remembered.
constexpr long long kQuarterSeconds = 900;

/// What tells one zone from most others. The names are compared as they stand in memory: another thread may just be
/// setting them, and take away what they were.
struct ZoneMark {
  const void* names[2] = {};
  long seconds_west = 0;
  int has_rule = 0;

  static ZoneMark now() { return {{tzname[0], tzname[1]}, timezone, daylight}; }
  bool operator==(const ZoneMark& other) const {
    return names[0] == other.names[0] && names[1] == other.names[1] && seconds_west == other.seconds_west &&
           has_rule == other.has_rule;
  }
};

std::int64_t current_tick() {
  std::timespec now = {};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

bool are_equal(const LocalZone& one, const LocalZone& other) {
  return one.offset_seconds == other.offset_seconds && one.is_daylight_saving == other.is_daylight_saving;
}

LocalZone ask_system(long long unix_seconds) {
  const ForkDelay fork_delay;  // the C library locks its zone meanwhile
  std::tm local = {};
  const auto moment = static_cast<std::time_t>(unix_seconds);
  if (localtime_r(&moment, &local) == nullptr) return {};
  return {static_cast<int>(local.tm_gmtoff), local.tm_isdst > 0};
}

long long floor_to_quarter(long long seconds) {
  const long long rest = seconds % kQuarterSeconds;
  return seconds - (rest < 0 ? rest + kQuarterSeconds : rest);
}

/// What one thread remembers. Small, and without a destructor: the library may be loaded at run time, and times are
/// still asked for at a thread's end.
class RememberedQuarters {
 public:
  /// Null when nothing is known of the quarter that begins then.
  const LocalZone* find(long long begin) {
    if (tick_ != current_tick() || !(mark_ == ZoneMark::now())) return nullptr;
    const Quarter& quarter = quarters_[place_of(begin)];
    return quarter.is_known && quarter.begin == begin ? &quarter.zone : nullptr;
  }
  /// `mark` is what the zone had before it was asked.
  void keep(long long begin, const LocalZone& zone, const ZoneMark& mark) {
    const ZoneMark mark_now = ZoneMark::now();
    if (!(mark == mark_now)) return;
    const std::int64_t tick = current_tick();
    if (tick != tick_ || !(mark == mark_)) *this = RememberedQuarters();
    tick_ = tick;
    mark_ = mark;
    quarters_[place_of(begin)] = {begin, zone, true};
  }

 private:
  static constexpr unsigned kQuarters = 4;

  struct Quarter {
    long long begin = 0;
    LocalZone zone;
    bool is_known = false;
  };

  static unsigned place_of(long long begin) {
    return static_cast<unsigned>(static_cast<unsigned long long>(begin / kQuarterSeconds) % kQuarters);
  }

  std::int64_t tick_ = -1;
  ZoneMark mark_;
  Quarter quarters_[kQuarters];
};

constinit thread_local RememberedQuarters remembered;

}  // namespace

LocalZone local_zone_at(long long unix_seconds) noexcept {
  const long long begin = floor_to_quarter(unix_seconds);
  if (const LocalZone* const known = remembered.find(begin)) return *known;
  const ZoneMark mark = ZoneMark::now();
  const LocalZone first = ask_system(begin);
  const LocalZone last = ask_system(begin + kQuarterSeconds - 1);
  if (!are_equal(first, last)) return ask_system(unix_seconds);
  remembered.keep(begin, first, mark);
  return first;
}

}  // namespace qzlog
