#include "tools/choice/reader_moment.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <system_error>

#include "qzlog/qz_time.h"
#include "tools/logs/written_moment.h"

namespace qzlog_tool {

namespace {

// Those of the years 1 to 9999; calculating with them cannot overflow.
constexpr long long kEarliest = -62135596800;
constexpr long long kLatest = 253402300799;

constexpr std::size_t kDateSize = std::string_view("2026-11-21").size();
constexpr std::size_t kMinuteSize = std::string_view("2026-11-21 08:15").size();
constexpr std::size_t kSecondSize = std::string_view("2026-11-21 08:15:30").size();
constexpr long long kDay = 86400;

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
      return kDay;
    case 'w':
      return 7 * kDay;
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

/// A text with its zone, or one that is read as GMT's.
std::optional<long long> calendar_seconds(const std::string& text) {
  const std::optional<long long> moment = written_moment(text.c_str());
  return moment ? in_range(*moment) : std::nullopt;
}

/// The moment at which a clock shows so many seconds since it showed 1970-01-01 00:00:00. No zone changes twice in two
/// days.
long long moment_of(long long shown, const ReaderClock& clock) {
  const long before = clock.offset_at(shown - kDay);
  const long after = clock.offset_at(shown + kDay);
  const bool is_before = clock.offset_at(shown - before) == before;
  const bool is_after = clock.offset_at(shown - after) == after;
  if (is_before && is_after) return shown - std::max(before, after);
  return shown - (is_after ? after : before);
}

std::optional<long long> calendar_moment(std::string text, const ReaderClock& clock) {
  if (text.size() > kSecondSize) return calendar_seconds(text);
  if (text.size() == kDateSize) text += " 00:00:00";
  if (text.size() == kMinuteSize) text += ":00";
  if (text.size() != kSecondSize) return std::nullopt;
  if (text[kDateSize] == 'T') text[kDateSize] = ' ';
  const std::optional<long long> shown = calendar_seconds(text + " GMT");
  return shown ? in_range(moment_of(*shown, clock)) : std::nullopt;
}

/// The present day, or one so many before.
long long day_before(int days_before, const ReaderClock& clock) {
  return day_of_moment(clock.now + clock.offset_at(clock.now)) - days_before;
}

/// Days of the calendar may have more or fewer hours.
std::optional<long long> beginning_of_day(int days_before, const ReaderClock& clock) {
  return in_range(moment_of(day_before(days_before, clock) * kDay, clock));
}

}  // namespace

ReaderClock process_clock(long long now) {
  return {now, [](long long moment) {
            const auto seconds = static_cast<std::time_t>(moment);
            std::tm local = {};
            localtime_r(&seconds, &local);
            return local.tm_gmtoff;
          }};
}

std::optional<long long> find_moment(std::string_view text, const ReaderClock& clock) {
  if (text == "now") return clock.now;
  if (text == "today") return beginning_of_day(0, clock);
  if (text == "yesterday") return beginning_of_day(1, clock);
  if (text.starts_with('-')) return moment_before(text.substr(1), clock.now);
  if (text.starts_with('@')) {
    const std::optional<long long> seconds = whole_number(text.substr(1));
    return seconds ? in_range(*seconds) : std::nullopt;
  }
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  return calendar_moment(std::string(text), clock);
}

std::optional<long long> find_day(std::string_view text, const ReaderClock& clock) {
  if (text == "today") return day_before(0, clock);
  if (text == "yesterday") return day_before(1, clock);
  if (text.size() != kDateSize) return std::nullopt;
  const std::optional<long long> begin = calendar_seconds(std::string(text) + " 00:00:00 GMT");
  return begin ? std::optional(day_of_moment(*begin)) : std::nullopt;
}

std::optional<long long> find_time_of_day(std::string_view text) {
  constexpr std::string_view kForm = "00:00:00";
  constexpr std::size_t kMinuteForm = std::string_view("00:00").size();
  if (text.size() != kForm.size() && text.size() != kMinuteForm) return std::nullopt;
  long long parts[] = {0, 0, 0};
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool is_digit = text[at] >= '0' && text[at] <= '9';
    if (is_digit != (kForm[at] == '0') || (!is_digit && text[at] != ':')) return std::nullopt;
    if (is_digit) parts[at / 3] = parts[at / 3] * 10 + (text[at] - '0');
  }
  if (parts[0] > 23 || parts[1] > 59 || parts[2] > 59) return std::nullopt;
  return parts[0] * 3600 + parts[1] * 60 + parts[2];
}

long long day_of_moment(long long moment) { return (moment - time_of_day(moment)) / kDay; }

long long time_of_day(long long moment) { return (moment % kDay + kDay) % kDay; }

std::string line_moment_text(long long moment) {
  char text[sizeof "2026-11-21 08:15:30 GMT"];
  qz_Time::from_unix_seconds(moment).print_out(text, sizeof text);
  text[kDateSize] = 'T';
  text[kDateSize + 1 + std::string_view("08:15:30").size()] = 'Z';
  return {text, std::string_view("2026-11-21T08:15:30Z").size()};
}

}  // namespace qzlog_tool
