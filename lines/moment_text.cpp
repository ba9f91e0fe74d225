#include "lines/moment_text.h"

#include <algorithm>
#include <chrono>

#include "foundation/itoa.h"

namespace qzlog {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr long long kSecondsPerDay = 86400;
// 0000-01-01 00:00:00 and 9999-12-31 23:59:59.
constexpr long long kEarliestSecond = -62167219200;
constexpr long long kLatestSecond = 253402300799;

char* write_pair_and(char* target, unsigned number, char separator) {
  target = write_digit_pair(target, number);
  *target = separator;
  return target + 1;
}

}  // namespace

char* write_moment(char* target, long long unix_seconds) {
  // Counted from the first moment that has a text, so that nothing is negative.
  const auto seconds =
      static_cast<unsigned long long>(std::clamp(unix_seconds, kEarliestSecond, kLatestSecond) - kEarliestSecond);
  const auto day = static_cast<int>(seconds / kSecondsPerDay);
  const auto second_of_day = static_cast<unsigned>(seconds % kSecondsPerDay);
  const year_month_day date(sys_days(days(day + kEarliestSecond / kSecondsPerDay)));
  const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
  target = write_digit_pair(target, year / 100);
  target = write_pair_and(target, year % 100, '-');
  target = write_pair_and(target, static_cast<unsigned>(date.month()), '-');
  target = write_pair_and(target, static_cast<unsigned>(date.day()), 'T');
  target = write_pair_and(target, second_of_day / 3600, ':');
  target = write_pair_and(target, second_of_day / 60 % 60, ':');
  return write_digit_pair(target, second_of_day % 60);
}

}  // namespace qzlog
