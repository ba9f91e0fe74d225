#include "tools/choice/reader_moment.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <system_error>
#include <utility>

#include "qzlog/qz_time.h"

namespace qzlog_tool {

namespace {

// Those of the years 1 to 9999; calculating with them cannot overflow.
constexpr long long kEarliest = -62135596800;
constexpr long long kLatest = 253402300799;

constexpr std::size_t kDateSize = std::string_view("2026-11-21").size();
constexpr std::size_t kMinuteSize = std::string_view("2026-11-21 08:15").size();

std::optional<long long> in_range(long long moment) {
  return moment >= kEarliest && moment <= kLatest ? std::optional(moment) : std::nullopt;
}

std::optional<long long> whole_number(std::string_view text) {
  long long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::optional<long long> seconds_of_unit(char unit) {
  switch (unit) {
    case 's':
      return 1;
    case 'm':
      return 60;
    case 'h':
      return 3600;
    case 'd':
      return 86400;
    case 'w':
      return 604800;
    default:
      return std::nullopt;
  }
}

/// "-2h" without its sign.
std::optional<long long> moment_before(std::string_view text, long long now) {
  if (text.size() < 2 || text.front() < '0' || text.front() > '9') return std::nullopt;
  const std::optional<long long> unit = seconds_of_unit(text.back());
  const std::optional<long long> count = whole_number(text.substr(0, text.size() - 1));
  if (!unit || !count || *count > (kLatest - kEarliest) / *unit) return std::nullopt;
  return in_range(now - *count * *unit);
}

/// The form that qz_Time reads: with seconds, and a blank where there is no zone.
std::optional<long long> calendar_moment(std::string text) {
  if (text.size() == kDateSize) text += " 00:00:00";
  if (text.size() == kMinuteSize) text += ":00";
  const bool has_zone = text.size() > kMinuteSize + 3;
  if (!has_zone && text.size() > kDateSize && text[kDateSize] == 'T') text[kDateSize] = ' ';
  qz_Time time;
  return time.set_to_string_value(text.c_str()) ? in_range(time.unix_seconds()) : std::nullopt;
}

/// The beginning of a day so many days from that of `now`. The calendar's day is taken: it may have more or fewer
/// hours.
std::optional<long long> beginning_of_day(long long now, int days_later) {
  qz_Time time = qz_Time::from_unix_seconds(now);
  time.GMT_to_local();
  const std::chrono::year_month_day today{std::chrono::year(time.get_year()),
                                          std::chrono::month(static_cast<unsigned>(time.get_month())),
                                          std::chrono::day(static_cast<unsigned>(time.get_day()))};
  const std::chrono::year_month_day day(std::chrono::sys_days(today) + std::chrono::days(days_later));
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()));
  return calendar_moment(text);
}

}  // namespace

std::optional<long long> find_moment(std::string_view text, long long now) {
  if (text == "now") return now;
  if (text == "today") return beginning_of_day(now, 0);
  if (text == "yesterday") return beginning_of_day(now, -1);
  if (text.starts_with('-')) return moment_before(text.substr(1), now);
  if (text.starts_with('@')) {
    const std::optional<long long> seconds = whole_number(text.substr(1));
    return seconds ? in_range(*seconds) : std::nullopt;
  }
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  return calendar_moment(std::string(text));
}

std::string line_moment_text(long long moment) {
  char text[sizeof "2026-11-21 08:15:30 GMT"];
  qz_Time::from_unix_seconds(moment).print_out(text, sizeof text);
  text[kDateSize] = 'T';
  text[kDateSize + 1 + std::string_view("08:15:30").size()] = 'Z';
  return {text, std::string_view("2026-11-21T08:15:30Z").size()};
}

}  // namespace qzlog_tool
