#include "tools/count/calendar_day.h"

#include <cstddef>
#include <cstdio>

#include "qzlog/qz_time.h"
#include "tools/compiler/text/number_text.h"

namespace qzlog_tool {

namespace {

constexpr int kLastYear = 9999;
constexpr std::string_view kPattern = "YYYY-MM-DD";

bool fits_pattern(std::string_view text) {
  if (text.size() != kPattern.size()) return false;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool is_digit = text[index] >= '0' && text[index] <= '9';
    if (kPattern[index] == '-' ? text[index] != '-' : !is_digit) return false;
  }
  return true;
}

int number_at(std::string_view text, std::size_t offset, std::size_t length) {
  return static_cast<int>(qzlog_compiler::parse_number(text.substr(offset, length), 0, kLastYear).value());
}

}  // namespace

// The calendar's own types hold a byte or two: what does not fit them has to be refused before.
std::optional<CalendarDay> calendar_day(int year, int month, int day) {
  if (year < 1 || year > kLastYear || month < 1 || month > 12 || day < 1 || day > 31) return std::nullopt;
  const CalendarDay date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                         std::chrono::day{static_cast<unsigned>(day)}};
  return date.ok() ? std::optional(date) : std::nullopt;
}

std::optional<CalendarDay> parse_day(std::string_view text) {
  if (!fits_pattern(text)) return std::nullopt;
  return calendar_day(number_at(text, 0, 4), number_at(text, 5, 2), number_at(text, 8, 2));
}

std::string day_text(CalendarDay day) {
  char text[32];
  std::snprintf(text, sizeof(text), "%04d-%02u-%02u", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()));
  return text;
}

CalendarDay local_today() {
  qz_Time now = qz_Time::now();
  now.GMT_to_local();
  return {std::chrono::year{now.get_year()}, std::chrono::month{static_cast<unsigned>(now.get_month())},
          std::chrono::day{static_cast<unsigned>(now.get_day())}};
}

}  // namespace qzlog_tool
