#include "definitions/file_changes.h"

#include <ctime>

namespace qzlog {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
// Longer than a file system takes the same time for two writes: where it tells full seconds alone, up to two of them.
constexpr std::int64_t kYoung = 50'000'000;
constexpr std::int64_t kYoungInSeconds = 3 * kNanoseconds;

std::timespec coarse_time(clockid_t clock) {
  std::timespec now = {};
  clock_gettime(clock, &now);
  return now;
}

std::int64_t current_tick() {
  const std::timespec now = coarse_time(CLOCK_MONOTONIC_COARSE);
  return std::int64_t{now.tv_sec} * kNanoseconds + now.tv_nsec;
}

/// Files may have times that are no nanoseconds of 64 bits.
bool is_young(const struct stat& status) {
  constexpr long long kSecondsInReach = 10;
  const std::timespec now = coarse_time(CLOCK_REALTIME_COARSE);
  const std::timespec& changed = status.st_ctim;
  if (changed.tv_sec < now.tv_sec - kSecondsInReach || changed.tv_sec > now.tv_sec + kSecondsInReach) return false;
  const std::int64_t age = std::int64_t{now.tv_sec - changed.tv_sec} * kNanoseconds + (now.tv_nsec - changed.tv_nsec);
  const std::int64_t young = changed.tv_nsec == 0 ? kYoungInSeconds : kYoung;
  return age < young && age > -young;
}

bool are_equal(const std::timespec& one, const std::timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

bool are_alike(const struct stat& one, const struct stat& other) {
  return one.st_size == other.st_size && are_equal(one.st_ctim, other.st_ctim) && are_equal(one.st_mtim, other.st_mtim);
}

}  // namespace

bool FileChanges::may_have_changed() noexcept {
  const std::int64_t tick = current_tick();
  if (tick == tick_) return is_doubtful_;
  tick_ = tick;
  struct stat now {};
  // What was read while it was young may have been written over since, with the same time.
  const bool was_doubtful = is_doubtful_;
  is_doubtful_ = fstat(descriptor_, &now) != 0 || is_young(now);
  const bool is_same = are_alike(now, seen_);
  seen_ = now;
  return !is_same || was_doubtful || is_doubtful_;
}

}  // namespace qzlog
