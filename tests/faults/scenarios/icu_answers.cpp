#include "tests/faults/scenarios/icu_answers.h"

#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/timezone.h>
#include <unicode/ucnv.h>
#include <unicode/uloc.h>
#include <unicode/unistr.h>

#include <ctime>
#include <memory>
#include <string>

namespace {

constexpr int kIntegers[] = {-2048, -340, -5, -4, 1, 2, 3, 4, 5, 7, 17, 24, 60, 18230, 28672, 40960, 409600, 1048576};
constexpr double kNumbers[] = {0.93, 93, 118.25, 1234.75};
// On the local clock, and in seconds since 1970.
constexpr const char* kLocalTimes[] = {"2026-11-22 02:30:00", "2026-11-20 01:30:00", "2026-11-01 00:00:00",
                                       "2026-07-01 07:00:12"};
constexpr std::time_t kMoment = 1795301100;

void add_answer(SeenText& answers, const std::string& question, const std::string& answer) {
  answers.add(question.c_str());
  answers.add("\t");
  answers.add(answer.c_str());
  answers.end_line();
}

std::string failed(const std::string& why) { return "failed: " + why; }

std::string in_utf8(const icu::UnicodeString& text, UErrorCode status) {
  if (U_FAILURE(status)) return failed(u_errorName(status));
  if (text.isBogus()) return failed("bogus");
  std::string bytes;
  text.toUTF8String(bytes);
  return bytes;
}

std::string format_with(const icu::UnicodeString& pattern, const char* locale, const icu::Formattable& value) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale wanted = locale[0] != '\0' ? icu::Locale(locale) : icu::Locale::getDefault();
  const icu::MessageFormat format(pattern, wanted, status);
  icu::UnicodeString text;
  icu::FieldPosition position;
  if (U_SUCCESS(status)) format.format(&value, 1, text, position, status);
  return in_utf8(text, status);
}

void ask_for_format(SeenText& answers, const char* style, const char* locale, const icu::Formattable& value,
                    const std::string& name) {
  const icu::UnicodeString pattern = icu::UnicodeString::fromUTF8("{0," + std::string(style) + "}");
  add_answer(answers, std::string(locale) + " " + style + " " + name, format_with(pattern, locale, value));
}

long g_offset = 0;

long offset_from_gmt() {
  std::tm local{};
  return localtime_r(&kMoment, &local) == nullptr ? 0 : local.tm_gmtoff;
}

std::time_t moment_of(const char* local_time) {
  std::tm local{};
  strptime(local_time, "%Y-%m-%d %H:%M:%S", &local);
  return timegm(&local) - g_offset;
}

std::string local_time(const char* format) {
  std::tm local{};
  if (localtime_r(&kMoment, &local) == nullptr) return failed("localtime_r");
  char text[64];
  std::strftime(text, sizeof text, format, &local);
  return text;
}

void ask_for_time(SeenText& answers, const char* locale, std::time_t moment, const std::string& name) {
  const icu::Formattable value(static_cast<double>(moment) * 1000.0, icu::Formattable::kIsDate);
  for (const char* const style : {"date", "time"}) ask_for_format(answers, style, locale, value, name);
}

std::string default_zone() {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
  if (zone == nullptr) return failed("createDefault");
  icu::UnicodeString id;
  return in_utf8(zone->getID(id), U_ZERO_ERROR) + " " + std::to_string(zone->getRawOffset());
}

}  // namespace

void ask_for_local_time(SeenText& answers) {
  g_offset = offset_from_gmt();
  // As the samples' attribute shows it.
  add_answer(answers, "local offset", "TIMEZONE_DIFFERENCE " + std::to_string(g_offset / 60));
  for (const char* const format : {"%Y-%m-%d", "%H:%M:%S"}) {
    add_answer(answers, std::string("local time ") + format, local_time(format));
  }
}

void ask_for_defaults(SeenText& answers) {
  add_answer(answers, "default locale", uloc_getDefault());
  add_answer(answers, "default code page", ucnv_getDefaultName());
  add_answer(answers, "default zone", default_zone());
}

void ask_for_formats(SeenText& answers, const char* locale) {
  for (const int value : kIntegers) ask_for_format(answers, "number,##########", locale, value, std::to_string(value));
  for (const double value : kNumbers) {
    for (const char* const style : {"number", "number,percent", "number,currency"}) {
      ask_for_format(answers, style, locale, value, std::to_string(value));
    }
  }
  for (const char* const time : kLocalTimes) ask_for_time(answers, locale, moment_of(time), time);
  ask_for_time(answers, locale, kMoment, std::to_string(kMoment));
}

void ask_for_code_page(SeenText& answers, const char* code_page, const char16_t* text) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UConverter, void (*)(UConverter*)> converter(ucnv_open(code_page, &status), ucnv_close);
  char bytes[64];
  char16_t back[64];
  const int length = ucnv_fromUChars(converter.get(), bytes, sizeof bytes, text, -1, &status);
  const int back_length = ucnv_toUChars(converter.get(), back, 64, bytes, length, &status);
  add_answer(answers, code_page, in_utf8(icu::UnicodeString(back, U_SUCCESS(status) ? back_length : 0), status));
}
