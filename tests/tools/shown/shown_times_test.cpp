#include "tools/shown/shown_times.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/support/seeded_random.h"
#include "tools/compiler/text/display_width.h"
#include "tools/options/reader_zone.h"

namespace {

using qz_test::SetEnv;
using qzlog_tool::ReaderZone;
using qzlog_tool::ShownTimes;
using qzlog_tool::TimeStyle;

constexpr long long kMoment = 1'795'249'730;  // 2026-11-21T08:28:50Z

std::string shown(const ReaderZone& zone, TimeStyle style, long long moment = kMoment, const char* locale = "") {
  ShownTimes times(zone, style, locale);
  std::string out;
  times.append(moment, out);
  return out;
}

TEST(ShownTimes, Styles_AreThose) {
  const ReaderZone berlin = ReaderZone::named("Europe/Berlin");
  EXPECT_EQ(shown(berlin, TimeStyle::kIso), "2026-11-21T09:28:50+01:00");
  EXPECT_EQ(shown(berlin, TimeStyle::kShort), "2026-11-21 09:28:50");
  EXPECT_EQ(shown(berlin, TimeStyle::kLocale, kMoment, "de_DE"), "21.11.2026, 09:28:50");
  EXPECT_EQ(shown(berlin, TimeStyle::kLocale, kMoment, "en_GB"), "21 Nov 2026, 09:28:50");
  EXPECT_EQ(shown(ReaderZone::utc(), TimeStyle::kIso), "2026-11-21T08:28:50Z");
  EXPECT_EQ(shown(ReaderZone::named("UTC"), TimeStyle::kIso), "2026-11-21T08:28:50Z");
  EXPECT_EQ(shown(ReaderZone::named("Europe/London"), TimeStyle::kIso), "2026-11-21T08:28:50+00:00");
  EXPECT_EQ(shown(ReaderZone::named("America/St_Johns"), TimeStyle::kIso), "2026-11-21T04:58:50-03:30");
}

TEST(ShownTimes, EdgesOfTheCalendar_HaveFourDigits) {
  EXPECT_EQ(shown(ReaderZone::utc(), TimeStyle::kIso, -62'167'219'200), "0000-01-01T00:00:00Z");
  EXPECT_EQ(shown(ReaderZone::utc(), TimeStyle::kIso, 253'402'300'799), "9999-12-31T23:59:59Z");
  EXPECT_EQ(shown(ReaderZone::utc(), TimeStyle::kIso, -1), "1969-12-31T23:59:59Z");
  EXPECT_EQ(shown(ReaderZone::named("Asia/Tokyo"), TimeStyle::kIso, 253'402'300'799), "0000-01-01T08:59:59+09:00");
  EXPECT_EQ(shown(ReaderZone::named("Europe/Berlin"), TimeStyle::kIso, -3'000'000'000), "1874-12-07T19:33:00+00:53")
      << "local mean time, without its seconds";
}

// A date and a time of day are nobody's moment, and messages show them so.
TEST(ShownTimes, Parts_AreInGmt) {
  ShownTimes times(ReaderZone::named("Asia/Kathmandu"), TimeStyle::kIso);
  std::string out;
  times.append(kMoment, ".125", out);
  times.append_local(kMoment, out += ' ');
  ShownTimes::append_date(kMoment + 36000, out += ' ');
  ShownTimes::append_clock(kMoment, out += ' ');
  EXPECT_EQ(out, "2026-11-21T14:13:50.125+05:45 2026-11-21 14:13:50 2026-11-21 08:28:50");
  EXPECT_EQ(times.columns(), 25u);
}

TEST(ShownTimes, Columns_AreThoseOfTheWidestMoments) {
  for (const char* const locale : {"en_US", "de_DE", "fr_FR", "ja_JP", "zh_TW", "ko_KR", "bg_BG", "ar_EG", "my", "am",
                                   "de_DE@calendar=hebrew", "en_US@calendar=islamic", "zh_CN@calendar=chinese"}) {
    ShownTimes times(ReaderZone::named("Asia/Kathmandu"), TimeStyle::kLocale, locale);
    const std::size_t columns = times.columns();
    std::size_t widest = 0;
    for (long long moment = kMoment; moment < kMoment + 366 * 86400; moment += 3 * 3600) {
      std::string out;
      times.append(moment, out);
      widest = std::max(widest, qzlog_compiler::display_width(out));
    }
    EXPECT_GE(columns, widest) << locale;
    EXPECT_LE(columns, widest + 2) << locale;
  }
  ShownTimes american(ReaderZone::utc(), TimeStyle::kLocale, "en_US");
  EXPECT_EQ(american.columns(), std::string("Nov 21, 2026, 10:15:30 PM").size());
}

TEST(ShownTimes, ColumnsWithAFraction_AreThoseToo) {
  ShownTimes iso(ReaderZone::utc(), TimeStyle::kIso);
  EXPECT_EQ(iso.columns_with_fraction(), std::string("2026-11-21T08:28:50.123456789Z").size());
  ShownTimes locale(ReaderZone::utc(), TimeStyle::kLocale, "de_DE");
  EXPECT_EQ(locale.columns_with_fraction(), locale.columns());
}

/// What the C library makes of it.
std::string by_the_c_library(long long moment) {
  const auto time = static_cast<std::time_t>(moment);
  std::tm fields = {};
  ::localtime_r(&time, &fields);
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &fields);
  return std::string(text).insert(22, ":");
}

constexpr const char* kZones[] = {"Europe/Berlin",     "America/New_York",  "Asia/Kathmandu", "Australia/Lord_Howe",
                                  "America/St_Johns",  "Africa/Casablanca", "Pacific/Apia",   "Asia/Tehran",
                                  "America/Sao_Paulo", "Pacific/Kiritimati"};

// The years of reliable zones, every fifth of which jumps.
TEST(ShownTimes, RandomMomentsInTenZones_AreThoseOfTheCLibrary) {
  qz_test::SeededRandom random;
  for (const char* const name : kZones) {
    const SetEnv zone("TZ", name);
    ::tzset();
    ShownTimes of_process(ReaderZone(), TimeStyle::kIso);
    ShownTimes named(ReaderZone::named(name), TimeStyle::kIso);
    long long moment = 0;
    for (int round = 0; round < 3000; ++round) {
      moment = random.one_in(5) ? random.between(600'000'000, 1'700'000'000) : moment + random.between(-2000, 2000);
      if (moment < 600'000'000) moment = 600'000'000;
      std::string process;
      std::string database;
      of_process.append(moment, process);
      named.append(moment, database);
      ASSERT_EQ(process, by_the_c_library(moment)) << name << ' ' << moment;
      ASSERT_EQ(database, process) << name << ' ' << moment;
    }
  }
  ::tzset();
}

// Each second around each change of the clock in a year.
TEST(ShownTimes, SecondsAroundChanges_AreThoseOfTheCLibrary) {
  for (const char* const name : kZones) {
    const SetEnv zone("TZ", name);
    ::tzset();
    ShownTimes times(ReaderZone::named(name), TimeStyle::kIso);
    for (long long hour = 1'577'836'800; hour < 1'609'459'200; hour += 3600) {
      if (by_the_c_library(hour).substr(19) == by_the_c_library(hour + 3600).substr(19)) continue;
      for (long long moment = hour; moment <= hour + 3600; ++moment) {
        std::string out;
        times.append(moment, out);
        ASSERT_EQ(out, by_the_c_library(moment)) << name;
      }
    }
  }
  ::tzset();
}

TEST(ShownTimes, MomentOfALine_IsCutAtItsPoint) {
  qzlog_tool::WrittenMoment moment;
  ASSERT_TRUE(qzlog_tool::read_moment("2026-11-21T09:28:50.000120000+01:00", moment));
  EXPECT_EQ(moment.seconds, kMoment);
  EXPECT_EQ(moment.fraction, ".000120000");
  ASSERT_TRUE(qzlog_tool::read_moment("2026-11-21T08:28:50Z", moment));
  EXPECT_EQ(moment.fraction, "");
  EXPECT_FALSE(qzlog_tool::read_moment("", moment));
  EXPECT_FALSE(qzlog_tool::read_moment("yesterday", moment));
}

}  // namespace
