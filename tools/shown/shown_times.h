#ifndef QZLOG_TOOLS_SHOWN_SHOWN_TIMES_H
#define QZLOG_TOOLS_SHOWN_SHOWN_TIMES_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "tools/options/reader_zone.h"

namespace qzlog_tool {

enum class TimeStyle {
  kIso,     ///< 2026-11-21T09:15:30+01:00; 2026-11-21T08:15:30Z in UTC
  kShort,   ///< 2026-11-21 09:15:30
  kLocale,  ///< as the locale writes a date and a time: 21.11.2026, 09:15:30
};

/// Moments as a reader sees them, in seconds since 1970-01-01 00:00:00 GMT. In the styles kIso and kShort nothing takes
/// memory but `out`. One thread uses it.
class ShownTimes {
 public:
  /// `locale` is ICU's name for the style kLocale, "" for its default.
  ShownTimes(ReaderZone zone, TimeStyle style, const std::string& locale = "");
  ShownTimes(ShownTimes&&) noexcept;
  ~ShownTimes();

  void append(long long moment, std::string& out) { append(moment, {}, out); }
  /// `fraction` stands behind the second, with its point (".123456789"); not in the style kLocale.
  void append(long long moment, std::string_view fraction, std::string& out);
  /// On the reader's clock, as 2026-11-21 09:15:30.
  void append_local(long long moment, std::string& out);
  /// The date and the time of day in GMT, where values of the types Date and Time have them, whoever reads them.
  static void append_date(long long moment, std::string& out);
  static void append_clock(long long moment, std::string& out);

  /// The columns that the widest moments take, without a fraction and with one of nine digits.
  std::size_t columns();
  std::size_t columns_with_fraction();

 private:
  class LocaleFormat;

  void append_both(long long clock_seconds, char between, std::string& out);
  void append_zone(long offset, std::string& out) const;

  ReaderZone zone_;
  TimeStyle style_;
  std::unique_ptr<LocaleFormat> format_;
  long long kept_day_ = 0;  // of which kept_date_ is the date, days since 1970-01-01
  char kept_date_[10] = {'1', '9', '7', '0', '-', '0', '1', '-', '0', '1'};
};

/// A moment of RFC 3339, cut into seconds and what stands behind the point.
struct WrittenMoment {
  long long seconds = 0;
  std::string_view fraction;  ///< with its point; empty without
};

/// False for a text that is none. `text` has to outlive the result.
bool read_moment(const char* text, WrittenMoment& moment);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_SHOWN_TIMES_H
