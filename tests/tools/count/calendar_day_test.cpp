#include "tools/count/calendar_day.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include "qzlog/qz_time.h"
#include "tests/support/scoped_environment.h"

namespace {

using qzlog_tool::calendar_day;
using qzlog_tool::day_text;
using qzlog_tool::local_today;
using qzlog_tool::parse_day;

TEST(CalendarDay, RealDates_AreReadAndWrittenBack) {
  for (const char* const text : {"0001-01-01", "2024-02-29", "2000-02-29", "2026-11-21", "9999-12-31"}) {
    const auto day = parse_day(text);
    ASSERT_TRUE(day.has_value()) << text;
    EXPECT_EQ(day_text(*day), text);
  }
}

TEST(CalendarDay, OtherTexts_AreRefused) {
  for (const char* const text : {"",           "2026",        "2026-11",     "2026-11-2",  "2026-11-021", "26-11-21",
                                 "2026/11/21", "2026-11-21 ", " 2026-11-21", "2026-1a-21", "+026-11-21",  "-026-11-21",
                                 "2026-11--1", "0000-01-01",  "2026-00-01",  "2026-13-01", "2026-11-00",  "2026-11-31",
                                 "2026-02-29", "1900-02-29",  "2026-12-32",  "10000-01-01"}) {
    EXPECT_FALSE(parse_day(text).has_value()) << text;
  }
}

// Each would be another date if it were cut to the bytes that a calendar type has.
TEST(CalendarDay, NumbersThatNoCalendarTypeHolds_AreRefused) {
  EXPECT_FALSE(calendar_day(65536 + 2026, 1, 1).has_value());
  EXPECT_FALSE(calendar_day(2026, 256 + 1, 1).has_value());
  EXPECT_FALSE(calendar_day(2026, 1, 256 + 1).has_value());
  EXPECT_FALSE(calendar_day(-2026, 1, 1).has_value());
  EXPECT_FALSE(calendar_day(2026, -1, 1).has_value());
  EXPECT_FALSE(calendar_day(2026, 1, -1).has_value());
}

TEST(CalendarDay, Today_IsTheLocalOne) {
  for (const char* const zone : {"Pacific/Kiritimati", "Pacific/Niue", "Asia/Kathmandu"}) {
    const qz_test::SetEnv variable("TZ", zone);
    ::tzset();
    const auto local = [] {
      qz_Time now = qz_Time::now();
      now.GMT_to_local();
      char text[16];
      now.print_date_out(text, sizeof text);
      return std::string(text);
    };
    const std::string before = local();
    const std::string today = day_text(local_today());
    EXPECT_TRUE(today == before || today == local()) << zone;
  }
}

}  // namespace
