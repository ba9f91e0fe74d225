#include "tools/merge/line_moment.h"

#include <cstddef>

#include "tools/choice/raw_line.h"
#include "tools/logs/line_members.h"
#include "tools/logs/written_moment.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kMinuteSize = std::string_view("2026-11-21T08:15:").size();

bool is_digit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

// Most lines are of the minute of the line before.
std::optional<long long> LineMoments::of_plain(std::string_view time) {
  const char tens = time[kMinuteSize];
  const char ones = time[kMinuteSize + 1];
  if (!is_digit(tens) || !is_digit(ones)) return written_moment(std::string(time).c_str());
  if (time.substr(0, kMinuteSize) != minute_) {
    minute_ = time.substr(0, kMinuteSize);
    const std::optional<long long> begin = written_moment((minute_ + "00Z").c_str());
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
  return written_moment((is_entry ? members->time : members->written).c_str());
}

}  // namespace qzlog_tool
