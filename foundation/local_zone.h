#ifndef QZLOG_FOUNDATION_LOCAL_ZONE_H
#define QZLOG_FOUNDATION_LOCAL_ZONE_H

namespace qzlog {

/// What the process's local time zone says about a moment.
struct LocalZone {
  int offset_seconds = 0;  ///< of the local clock from GMT, eastward
  bool is_daylight_saving = false;
};

/// As localtime_r tells it; GMT when the system cannot. localtime_r takes a lock of the process each time: what it said
/// is remembered, by each thread for itself, for the quarter of an hour that the moment lies in. A tzset() that changes
/// a name, the offset or the rule of the zone is noticed at once, another one with the next tick of the system's clock,
/// within a few milliseconds. Any thread.
LocalZone local_zone_at(long long unix_seconds) noexcept;

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_LOCAL_ZONE_H
