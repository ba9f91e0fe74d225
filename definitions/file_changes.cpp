#include "definitions/file_changes.h"

#include <ctime>

namespace qzlog {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
// Longer than a file system takes the same time for two writes: where it tells full seconds alone, up to two of them.
constexpr std::int64_t kYoung = 50'000'000;
constexpr std::int64_t kYoungInSeconds = 3 * kNanoseconds;

std::int64_t in_nanoseconds(const std::timespec& time) {
  return std::int64_t{time.tv_sec} * kNanoseconds + time.tv_nsec;
}

std::int64_t coarse_time(clockid_t clock) {
  std::timespec now = {};
  clock_gettime(clock, &now);
  return in_nanoseconds(now);
}

bool is_young(const struct stat& status) {
  const std::int64_t age = coarse_time(CLOCK_REALTIME_COARSE) - in_nanoseconds(status.st_ctim);
  const std::int64_t young = status.st_ctim.tv_nsec == 0 ? kYoungInSeconds : kYoung;
  return age < young && age > -young;
}

bool are_alike(const struct stat& one, const struct stat& other) {
  return one.st_size == other.st_size && in_nanoseconds(one.st_ctim) == in_nanoseconds(other.st_ctim) &&
         in_nanoseconds(one.st_mtim) == in_nanoseconds(other.st_mtim);
}

}  // namespace

bool FileChanges::may_have_changed() noexcept {
  const std::int64_t tick = coarse_time(CLOCK_MONOTONIC_COARSE);
  if (tick == tick_) return is_doubtful_;
  tick_ = tick;
  struct stat now {};
  is_doubtful_ = fstat(descriptor_, &now) != 0 || is_young(now);
  const bool is_same = are_alike(now, seen_);
  seen_ = now;
  return !is_same || is_doubtful_;
}

}  // namespace qzlog
