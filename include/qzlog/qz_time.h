#ifndef QZLOG_QZ_TIME_H
#define QZLOG_QZ_TIME_H

#include "qzlog/export.h"

/// A calendar time in whole seconds, together with a mode that says on which clock it is read: GMT or the process's
/// local time zone. A value type; const members may be called from any thread. The time zone is what localtime_r
/// says; another one that a tzset() brings is noticed at once, or, where names, offset and rule are the same, within
/// milliseconds.
class QZLOG_EXPORT qz_Time {
 public:
  /// The zero time: 1970-01-01 00:00:00 in GMT mode.
  qz_Time() noexcept;
  /// The moment `seconds` after 1970-01-01 00:00:00 GMT (negative: before), in GMT mode.
  static qz_Time from_unix_seconds(long long seconds) noexcept;
  /// The current moment in GMT mode.
  static qz_Time now() noexcept;

  void set_zero() noexcept;

  /// Calendar fields on the clock of the current mode. Month 1 to 12, day 1 to 31.
  int get_year() const noexcept;
  int get_month() const noexcept;
  int get_day() const noexcept;
  int get_hour() const noexcept;
  int get_minute() const noexcept;
  int get_second() const noexcept;

  bool is_GMT_time_mode() const noexcept { return gmt_mode_; }
  /// Says on which clock the calendar fields are to be read, without changing them. The moment meant changes with it.
  void set_GMT_time_mode(bool gmt) noexcept;

  /// Convert to the other clock; the moment stays the same. A value already in that mode is left alone.
  void GMT_to_local() noexcept;
  void local_to_GMT() noexcept;

  /// The moment as seconds since 1970-01-01 00:00:00 GMT, whatever the mode. A local time that the zone repeats is its
  /// first occurrence, unless it came from GMT_to_local(), which keeps the exact moment; one that the zone skips counts
  /// on with the offset before the gap.
  long long unix_seconds() const noexcept;

  /// Negative, 0 or positive as this moment is earlier than, the same as or later than `other`, whatever the modes.
  int compare_time(const qz_Time& other) const noexcept;

  /// Minutes that the local zone's standard time lies WEST of GMT at this moment (Berlin: -60, New York: 300). Daylight
  /// saving is taken as 60 minutes, so that with it the difference to GMT comes out even where a zone shifts by another
  /// amount.
  int get_timezone_offset() const noexcept;
  /// Whether the local zone observes daylight saving at this moment, whatever the mode.
  bool is_daylight_saving() const noexcept;
  /// Both of the above, asked of the system once.
  QZLOG_NO_EXPORT void get_zone(int& timezone_offset, bool& daylight_saving) const noexcept;

  /// Write "YYYY-MM-DD HH:MM:SS" (followed by " GMT" in GMT mode), "YYYY-MM-DD" and "HH:MM:SS" into `buffer`, cut to
  /// `size` bytes with the terminator. A size of 0 writes nothing.
  void print_out(char* buffer, unsigned size) const noexcept;
  void print_date_out(char* buffer, unsigned size) const noexcept;
  void print_time_out(char* buffer, unsigned size) const noexcept;

  /// Reads what print_out writes, mode included, or an RFC 3339 date and time ("2026-11-21T08:15:30.5+01:00": the
  /// fraction is dropped, the value becomes GMT). A text that is neither, or names no real date and time, leaves the
  /// value as it was and returns false. Null is such a text. A leap second (:60) counts as the next second.
  bool set_to_string_value(const char* text) noexcept;

 private:
  long long clock_seconds_;  // seconds between 1970-01-01 00:00:00 and the calendar fields, on the clock of the mode
  bool gmt_mode_;
  // For a local value converted from GMT, seconds east of GMT then in force: without it the hour that a zone repeats in
  // autumn could not be converted back. kOffsetUnknown for values given as calendar fields.
  int local_offset_;
};

#endif  // QZLOG_QZ_TIME_H
