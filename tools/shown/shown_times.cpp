#include "tools/shown/shown_times.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/fieldpos.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include "message/icu_memory.h"
#include "qzlog/qz_time.h"
#include "tools/compiler/text/display_width.h"

namespace qzlog_tool {

namespace {

constexpr long kSecondsPerMinute = 60;
constexpr long kSecondsPerHour = 3600;
constexpr long long kSecondsPerDay = 24 * kSecondsPerHour;
/// 2026-01-01 00:15:30
constexpr long long kSampleMoment = 1'767'226'530;
constexpr std::size_t kFractionColumns = 10;

char* write_pair(char* target, unsigned below_100) {
  *target++ = static_cast<char>('0' + below_100 / 10);
  *target++ = static_cast<char>('0' + below_100 % 10);
  return target;
}

/// A moment of the reader's clock, in seconds since 1970-01-01 00:00:00 of it.
struct ClockMoment {
  explicit ClockMoment(long long clock_seconds)
      : day((clock_seconds - (clock_seconds < 0 ? kSecondsPerDay - 1 : 0)) / kSecondsPerDay),
        second(static_cast<unsigned>(clock_seconds - day * kSecondsPerDay)) {}

  long long day;    ///< since that one
  unsigned second;  ///< of the day
};

/// YYYY-MM-DD. Years beyond four digits, which no line has, have their last ones.
char* write_date(long long day, char* target) {
  using namespace std::chrono;
  const year_month_day date{sys_days{days{day}}};
  const auto year = static_cast<unsigned>(((static_cast<int>(date.year()) % 10000) + 10000) % 10000);
  target = write_pair(write_pair(target, year / 100), year % 100);
  *target++ = '-';
  target = write_pair(target, static_cast<unsigned>(date.month()));
  *target++ = '-';
  return write_pair(target, static_cast<unsigned>(date.day()));
}

/// HH:MM:SS
char* write_clock(unsigned second, char* target) {
  target = write_pair(target, second / 3600);
  *target++ = ':';
  target = write_pair(target, second / 60 % 60);
  *target++ = ':';
  return write_pair(target, second % 60);
}

}  // namespace

/// A date and a time as a locale has them. The zone is added beforehand: the reader's clock is ICU's GMT.
class ShownTimes::LocaleFormat {
 public:
  explicit LocaleFormat(const std::string& locale_name) {
    qzlog::with_icu_memory([&] {
      const qzlog::IcuMemory memory;
      icu::Locale locale = locale_name.empty() ? icu::Locale::getDefault() : icu::Locale(locale_name.c_str());
      // Of a name in the environment that is none ICU makes a locale whose formats crash.
      if (locale.isBogus()) locale = icu::Locale::getRoot();
      format_.reset(
          icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kMedium, locale));
      memory.check_made(format_.get());
      format_->setTimeZone(*icu::TimeZone::getGMT());
      calendar_.reset(format_->getCalendar()->clone());
      memory.check_made(calendar_.get());
      memory.check();
    });
  }

  // Lines near each other have the same second more often than not.
  void append(long long clock_seconds, std::string& out) {
    if (!has_text_ || clock_seconds != second_) format(clock_seconds);
    out += text_;
  }

  /// Of the widest text in a year. A step of ten days meets two digits of a day in each month of whatever calendar, and
  /// the hours are two digits wide with each half of the day, and noon.
  std::size_t columns() {
    std::size_t widest = 0;
    for (long day = 0; day < 366; day += 10) {
      for (const long hour : {10L, 12L, 22L}) {
        format(kSampleMoment + day * kSecondsPerDay + hour * kSecondsPerHour);
        widest = std::max(widest, qzlog_compiler::display_width(text_));
      }
    }
    return widest;
  }

 private:
  void format(long long clock_seconds) {
    qzlog::with_icu_memory([&] {
      const qzlog::IcuMemory memory;
      UErrorCode status = U_ZERO_ERROR;
      calendar_->setTime(static_cast<double>(clock_seconds) * 1000, status);
      room_.remove();
      icu::FieldPosition ignored(icu::FieldPosition::DONT_CARE);
      format_->format(*calendar_, room_, ignored);
      memory.check(room_, status);
      text_.clear();
      room_.toUTF8String(text_);
    });
    second_ = clock_seconds;
    has_text_ = true;
  }

  std::unique_ptr<icu::DateFormat> format_;
  std::unique_ptr<icu::Calendar> calendar_;
  icu::UnicodeString room_;
  std::string text_;
  long long second_ = 0;
  bool has_text_ = false;
};

ShownTimes::ShownTimes(ReaderZone zone, TimeStyle style, const std::string& locale)
    : zone_(std::move(zone)), style_(style) {
  if (style == TimeStyle::kLocale) format_ = std::make_unique<LocaleFormat>(locale);
}

ShownTimes::ShownTimes(ShownTimes&&) noexcept = default;
ShownTimes::~ShownTimes() = default;

void ShownTimes::append(long long moment, std::string_view fraction, std::string& out) {
  const long offset = zone_.offset_at(moment);
  if (style_ == TimeStyle::kLocale) return format_->append(moment + offset, out);
  if (style_ == TimeStyle::kShort) {
    append_both(moment + offset, ' ', out);
    out += fraction;
    return;
  }
  // RFC 3339 has no seconds in offsets, as zones had before they kept to the hour.
  const long minutes = offset / kSecondsPerMinute;
  append_both(moment + minutes * kSecondsPerMinute, 'T', out);
  out += fraction;
  append_zone(minutes, out);
}

// Lines near each other have the same date more often than not.
void ShownTimes::append_both(long long clock_seconds, char between, std::string& out) {
  const ClockMoment moment(clock_seconds);
  if (moment.day != kept_day_) {
    write_date(moment.day, kept_date_);
    kept_day_ = moment.day;
  }
  char text[sizeof kept_date_ + 9];
  std::memcpy(text, kept_date_, sizeof kept_date_);
  text[sizeof kept_date_] = between;
  out.append(text, write_clock(moment.second, text + sizeof kept_date_ + 1));
}

void ShownTimes::append_zone(long minutes, std::string& out) const {
  if (zone_.is_utc()) {
    out += 'Z';
    return;
  }
  const auto size = static_cast<unsigned>(minutes < 0 ? -minutes : minutes);
  char text[6] = {minutes < 0 ? '-' : '+'};
  char* const colon = write_pair(text + 1, size / 60 % 100);
  *colon = ':';
  out.append(text, write_pair(colon + 1, size % 60));
}

void ShownTimes::append_local(long long moment, std::string& out) {
  append_both(moment + zone_.offset_at(moment), ' ', out);
}

void ShownTimes::append_date(long long moment, std::string& out) {
  char text[10];
  out.append(text, write_date(ClockMoment(moment).day, text));
}

void ShownTimes::append_clock(long long moment, std::string& out) {
  char text[8];
  out.append(text, write_clock(ClockMoment(moment).second, text));
}

std::size_t ShownTimes::columns() {
  if (style_ == TimeStyle::kLocale) return format_->columns();
  std::string sample;
  append(kSampleMoment, sample);
  return sample.size();
}

std::size_t ShownTimes::columns_with_fraction() {
  return columns() + (style_ == TimeStyle::kLocale ? 0 : kFractionColumns);
}

bool read_moment(const char* text, WrittenMoment& moment) {
  qz_Time time;
  if (!time.set_to_string_value(text)) return false;
  moment.seconds = time.unix_seconds();
  const std::string_view whole(text);
  const std::size_t point = whole.find('.');
  const std::size_t end = whole.find_first_not_of("0123456789", point == std::string_view::npos ? point : point + 1);
  moment.fraction = point == std::string_view::npos ? std::string_view() : whole.substr(point, end - point);
  return true;
}

}  // namespace qzlog_tool
