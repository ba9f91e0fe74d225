#include "qzlog/qz_time.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "foundation/local_zone.h"

using namespace qzlog;

namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr int kOffsetUnknown = INT_MIN;
constexpr long long kSecondsPerDay = 86400;
// 0000-01-01 00:00:00 and 9999-12-31 23:59:59, the years that the text form can write.
constexpr long long kEarliestSecond = -62167219200;
constexpr long long kLatestSecond = 253402300799;

struct Calendar {
  int year, month, day, hour, minute, second;
};

Calendar calendar_of(long long clock_seconds) {
  const auto day = std::chrono::floor<days>(std::chrono::sys_seconds(seconds(clock_seconds)));
  const year_month_day date(day);
  const auto time = static_cast<int>(clock_seconds - day.time_since_epoch().count() * kSecondsPerDay);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          time / 3600,
          time / 60 % 60,
          time % 60};
}

/// False when the fields name no real date and time. Second 60 is the following second.
bool clock_seconds_of(const Calendar& calendar, long long& clock_seconds) {
  const year_month_day date(std::chrono::year(calendar.year), std::chrono::month(static_cast<unsigned>(calendar.month)),
                            std::chrono::day(static_cast<unsigned>(calendar.day)));
  if (!date.ok() || calendar.hour > 23 || calendar.minute > 59 || calendar.second > 60) return false;
  clock_seconds = sys_days(date).time_since_epoch().count() * kSecondsPerDay + calendar.hour * 3600 +
                  calendar.minute * 60 + calendar.second;
  return true;
}

int local_offset_at(long long unix_seconds) { return local_zone_at(unix_seconds).offset_seconds; }

/// The moment at which the local clock shows `clock_seconds`. Of a time shown twice it is the first, and one that is
/// skipped counts on with the offset before the gap: unlike mktime's, the answer depends on nothing but the zone.
long long moment_of_local_clock(long long clock_seconds) {
  const long long by_offset_before = clock_seconds - local_offset_at(clock_seconds - kSecondsPerDay);
  const long long by_offset_after = clock_seconds - local_offset_at(clock_seconds + kSecondsPerDay);
  for (const long long moment : {by_offset_before, by_offset_after}) {
    if (moment + local_offset_at(moment) == clock_seconds) return moment;
  }
  return by_offset_before;
}

/// Reads the text forms of a time from left to right; each step returns false, and reading is over, when the text
/// differs.
class TimeTextReader {
 public:
  explicit TimeTextReader(const char* text) : position_(text) {}

  template <int kDigits>
  bool number(int& value) {
    value = 0;
    for (int i = 0; i < kDigits; ++i, ++position_) {
      if (!is_digit(*position_)) return false;
      value = value * 10 + (*position_ - '0');
    }
    return true;
  }
  template <class... Characters>
  bool one_of(char& found, Characters... characters) {
    if (((*position_ != characters) && ...)) return false;
    found = *position_++;
    return true;
  }
  bool literal(char character) {
    if (*position_ != character) return false;
    ++position_;
    return true;
  }
  /// A fraction of a second, if there is one.
  bool fraction() {
    if (!literal('.')) return true;
    if (!is_digit(*position_)) return false;
    while (is_digit(*position_)) ++position_;
    return true;
  }
  bool rest_is(std::string_view text) const {
    const char* at = position_;
    for (const char character : text) {
      if (*at++ != character) return false;
    }
    return *at == '\0';
  }

 private:
  static bool is_digit(char character) { return character >= '0' && character <= '9'; }
  const char* position_;
};

bool read_calendar(TimeTextReader& reader, Calendar& calendar, char& separator) {
  return reader.number<4>(calendar.year) && reader.literal('-') && reader.number<2>(calendar.month) &&
         reader.literal('-') && reader.number<2>(calendar.day) && reader.one_of(separator, ' ', 'T', 't') &&
         reader.number<2>(calendar.hour) && reader.literal(':') && reader.number<2>(calendar.minute) &&
         reader.literal(':') && reader.number<2>(calendar.second);
}

/// The zone part of RFC 3339: "Z" or hours and minutes east of GMT.
bool read_zone(TimeTextReader& reader, int& seconds_east) {
  char sign = '\0';
  if (!reader.fraction() || !reader.one_of(sign, 'Z', 'z', '+', '-')) return false;
  seconds_east = 0;
  if (sign == '+' || sign == '-') {
    int hours = 0;
    int minutes = 0;
    if (!reader.number<2>(hours) || !reader.literal(':') || !reader.number<2>(minutes)) return false;
    if (hours > 23 || minutes > 59) return false;
    seconds_east = (hours * 60 + minutes) * (sign == '-' ? -60 : 60);
  }
  return reader.rest_is("");
}

}  // namespace

qz_Time::qz_Time() noexcept : clock_seconds_(0), gmt_mode_(true), local_offset_(kOffsetUnknown) {}

qz_Time qz_Time::from_unix_seconds(long long seconds) noexcept {
  qz_Time time;
  time.clock_seconds_ = std::clamp(seconds, kEarliestSecond, kLatestSecond);
  return time;
}

qz_Time qz_Time::now() noexcept { return from_unix_seconds(std::time(nullptr)); }

void qz_Time::set_zero() noexcept { *this = qz_Time(); }

int qz_Time::get_year() const noexcept { return calendar_of(clock_seconds_).year; }
int qz_Time::get_month() const noexcept { return calendar_of(clock_seconds_).month; }
int qz_Time::get_day() const noexcept { return calendar_of(clock_seconds_).day; }
int qz_Time::get_hour() const noexcept { return calendar_of(clock_seconds_).hour; }
int qz_Time::get_minute() const noexcept { return calendar_of(clock_seconds_).minute; }
int qz_Time::get_second() const noexcept { return calendar_of(clock_seconds_).second; }

void qz_Time::set_GMT_time_mode(bool gmt) noexcept {
  if (gmt == gmt_mode_) return;
  gmt_mode_ = gmt;
  local_offset_ = kOffsetUnknown;
}

void qz_Time::GMT_to_local() noexcept {
  if (!gmt_mode_) return;
  local_offset_ = local_offset_at(clock_seconds_);
  clock_seconds_ += local_offset_;
  gmt_mode_ = false;
}

void qz_Time::local_to_GMT() noexcept {
  if (gmt_mode_) return;
  clock_seconds_ = unix_seconds();
  local_offset_ = kOffsetUnknown;
  gmt_mode_ = true;
}

long long qz_Time::unix_seconds() const noexcept {
  if (gmt_mode_) return clock_seconds_;
  if (local_offset_ != kOffsetUnknown) return clock_seconds_ - local_offset_;
  return moment_of_local_clock(clock_seconds_);
}

int qz_Time::compare_time(const qz_Time& other) const noexcept {
  const long long mine = unix_seconds();
  const long long others = other.unix_seconds();
  return (mine > others) - (mine < others);
}

// Taken from the moment's own offset rather than from a process-wide constant, so that zones that changed their
// standard time, or shift by other than an hour in summer, give the true difference.
void qz_Time::get_zone(int& timezone_offset, bool& daylight_saving) const noexcept {
  const LocalZone zone = local_zone_at(unix_seconds());
  daylight_saving = zone.is_daylight_saving;
  timezone_offset = (daylight_saving ? 60 : 0) - zone.offset_seconds / 60;
}

int qz_Time::get_timezone_offset() const noexcept {
  int offset = 0;
  bool daylight_saving = false;
  get_zone(offset, daylight_saving);
  return offset;
}

bool qz_Time::is_daylight_saving() const noexcept { return local_zone_at(unix_seconds()).is_daylight_saving; }

void qz_Time::print_out(char* buffer, unsigned size) const noexcept {
  const Calendar at = calendar_of(clock_seconds_);
  std::snprintf(buffer, size, "%04d-%02d-%02d %02d:%02d:%02d%s", at.year, at.month, at.day, at.hour, at.minute,
                at.second, gmt_mode_ ? " GMT" : "");
}

void qz_Time::print_date_out(char* buffer, unsigned size) const noexcept {
  const Calendar at = calendar_of(clock_seconds_);
  std::snprintf(buffer, size, "%04d-%02d-%02d", at.year, at.month, at.day);
}

void qz_Time::print_time_out(char* buffer, unsigned size) const noexcept {
  const Calendar at = calendar_of(clock_seconds_);
  std::snprintf(buffer, size, "%02d:%02d:%02d", at.hour, at.minute, at.second);
}

bool qz_Time::set_to_string_value(const char* text) noexcept {
  if (text == nullptr) return false;
  TimeTextReader reader(text);
  Calendar calendar = {};
  char separator = '\0';
  long long clock_seconds = 0;
  if (!read_calendar(reader, calendar, separator) || !clock_seconds_of(calendar, clock_seconds)) return false;

  const bool own_form_gmt = reader.rest_is(" GMT");
  const bool own_form = separator == ' ' && (own_form_gmt || reader.rest_is(""));
  int seconds_east = 0;
  if (!own_form && !read_zone(reader, seconds_east)) return false;

  clock_seconds -= seconds_east;
  if (clock_seconds < kEarliestSecond || clock_seconds > kLatestSecond) return false;
  clock_seconds_ = clock_seconds;
  gmt_mode_ = !own_form || own_form_gmt;
  local_offset_ = kOffsetUnknown;
  return true;
}
