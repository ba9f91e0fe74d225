#include "tools/merge/line_moment.h"

#include <cstddef>

#include "qzlog/qz_time.h"
#include "tools/choice/raw_line.h"
#include "tools/logs/line_members.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kMinuteSize = std::string_view("2026-11-21T08:15:").size();

bool is_digit(char character) { return character >= '0' && character <= '9'; }

/// Nothing for a text that names no moment, as one without a zone.
std::optional<long long> parse(const std::string& text) {
  qz_Time time;
  time.set_GMT_time_mode(false);
  if (!time.set_to_string_value(text.c_str()) || !time.is_GMT_time_mode()) return std::nullopt;
  return time.unix_seconds();
}

}  // namespace

// Most lines are of the minute of the line before.
std::optional<long long> LineMoments::of_plain(std::string_view time) {
  const char tens = time[kMinuteSize];
  const char ones = time[kMinuteSize + 1];
  if (!is_digit(tens) || !is_digit(ones)) return parse(std::string(time));
  if (time.substr(0, kMinuteSize) != minute_) {
    minute_ = time.substr(0, kMinuteSize);
    const std::optional<long long> begin = parse(minute_ + "00Z");
    if (!begin) {
      minute_.clear();
      return std::nullopt;
    }
    begin_of_minute_ = *begin;
  }
  return begin_of_minute_ + (tens - '0') * 10 + (ones - '0');
}

std::optional<long long> LineMoments::of(std::string_view line) {
  const RawLine raw(line);
  if (raw.has_id() && !raw.time().empty()) return of_plain(raw.time());
  const std::optional<LineMembers> members = read_line_members(line);
  if (!members) return std::nullopt;
  const bool is_entry = members->id || !members->symbolic_id.empty();
  return parse(is_entry ? members->time : members->written);
}

}  // namespace qzlog_tool
