#ifndef QZLOG_TOOLS_CHOICE_READER_MOMENT_H
#define QZLOG_TOOLS_CHOICE_READER_MOMENT_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// The forms of `find_moment`, for hints and help.
inline constexpr std::string_view kMomentForms =
    "2026-11-21T08:15:30Z, 2026-11-21, '2026-11-21 08:15', today, yesterday, now, -2h (s m h d w), @1795248930";

/// What a reader's clock shows.
struct ReaderClock {
  long long now = 0;  ///< the present moment, in seconds since 1970-01-01 00:00:00 GMT
  /// Seconds east of Greenwich at a moment.
  std::function<long(long long moment)> offset_at;
};

/// The clock of the process's time zone.
ReaderClock process_clock(long long now);

/// What readers call a moment, in seconds since 1970-01-01 00:00:00 GMT; nothing for a text of no such form.
///
///   2026-11-21T08:15:30Z    RFC 3339, with any zone; a fraction is dropped, as it is from the times of entries
///   2026-11-21 08:15:30     on the reader's clock; T for the blank, and seconds left out, are taken
///   2026-11-21              the beginning of that day there
///   today, yesterday        the beginning of the present day, and of the one before
///   now, -90s, -30m, -2h, -3d, -1w      a day is 24 hours, whatever the clocks do
///   @1795248930             seconds since 1970-01-01 00:00:00 GMT; negative ones are before
///
/// A time that clocks show twice is its first; one that they pass over counts on with the offset before, so that a day
/// begins with its first moment where clocks are set forward at midnight.
std::optional<long long> find_moment(std::string_view text, const ReaderClock& clock);

/// The day of a text that names no time of day (2026-11-21, today, yesterday) on the reader's calendar, as the number
/// of days since 1970-01-01; nothing for other texts.
std::optional<long long> find_day(std::string_view text, const ReaderClock& clock);

/// "08:15" or "08:15:30" as seconds since midnight; nothing for other texts.
std::optional<long long> find_time_of_day(std::string_view text);

/// Of a moment, in GMT: the number of days since 1970-01-01, and the seconds since midnight.
long long day_of_moment(long long moment);
long long time_of_day(long long moment);

/// A moment that find_moment gave, as writers of lines write it: "2026-11-21T08:15:30Z".
std::string line_moment_text(long long moment);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_READER_MOMENT_H
