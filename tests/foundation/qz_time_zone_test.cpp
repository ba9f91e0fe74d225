#include <gtest/gtest.h>
#include <time.h>

#include <cctype>
#include <string>

#include "qzlog/qz_time.h"
#include "tests/support/support.h"

namespace {

using qz_test::SeededRandom;
using qz_test::TimeZone;

constexpr const char* kZones[] = {"UTC", "Europe/Berlin", "America/New_York", "Asia/Kathmandu", "Australia/Lord_Howe"};

std::string text(const qz_Time& time) {
  char buffer[128] = "";
  time.print_out(buffer, sizeof(buffer));
  return buffer;
}

qz_Time parsed(const char* input) {
  qz_Time time;
  EXPECT_TRUE(time.set_to_string_value(input)) << input;
  return time;
}

struct ZoneCase {
  const char* zone;
  const char* gmt;
  const char* local;
  bool daylight_saving;
  int minutes_east;  // local time minus GMT, daylight saving included
};

// The seconds before and after each change of the clocks in 2026, and some days between.
constexpr ZoneCase kCases[] = {{"UTC", "2026-07-01 12:00:00 GMT", "2026-07-01 12:00:00", false, 0},
                               {"Europe/Berlin", "2026-01-15 12:00:00 GMT", "2026-01-15 13:00:00", false, 60},
                               {"Europe/Berlin", "2026-03-29 00:59:59 GMT", "2026-03-29 01:59:59", false, 60},
                               {"Europe/Berlin", "2026-03-29 01:00:00 GMT", "2026-03-29 03:00:00", true, 120},
                               {"Europe/Berlin", "2026-07-01 12:00:00 GMT", "2026-07-01 14:00:00", true, 120},
                               {"Europe/Berlin", "2026-10-25 00:00:00 GMT", "2026-10-25 02:00:00", true, 120},
                               {"Europe/Berlin", "2026-10-25 00:59:59 GMT", "2026-10-25 02:59:59", true, 120},
                               {"Europe/Berlin", "2026-10-25 01:00:00 GMT", "2026-10-25 02:00:00", false, 60},
                               {"Europe/Berlin", "2026-10-25 01:59:59 GMT", "2026-10-25 02:59:59", false, 60},
                               {"America/New_York", "2026-01-15 12:00:00 GMT", "2026-01-15 07:00:00", false, -300},
                               {"America/New_York", "2026-03-08 06:59:59 GMT", "2026-03-08 01:59:59", false, -300},
                               {"America/New_York", "2026-03-08 07:00:00 GMT", "2026-03-08 03:00:00", true, -240},
                               {"America/New_York", "2026-11-01 05:59:59 GMT", "2026-11-01 01:59:59", true, -240},
                               {"America/New_York", "2026-11-01 06:00:00 GMT", "2026-11-01 01:00:00", false, -300},
                               {"Asia/Kathmandu", "2026-11-21 18:15:00 GMT", "2026-11-22 00:00:00", false, 345},
                               {"Australia/Lord_Howe", "2026-07-01 12:00:00 GMT", "2026-07-01 22:30:00", false, 630},
                               {"Australia/Lord_Howe", "2026-01-15 12:00:00 GMT", "2026-01-15 23:00:00", true, 660},
                               {"Australia/Lord_Howe", "2026-04-04 14:59:59 GMT", "2026-04-05 01:59:59", true, 660},
                               {"Australia/Lord_Howe", "2026-04-04 15:00:00 GMT", "2026-04-05 01:30:00", false, 630},
                               {"Australia/Lord_Howe", "2026-10-03 15:29:59 GMT", "2026-10-04 01:59:59", false, 630},
                               {"Australia/Lord_Howe", "2026-10-03 15:30:00 GMT", "2026-10-04 02:30:00", true, 660}};

class QzTimeZone : public testing::TestWithParam<ZoneCase> {
 protected:
  TimeZone zone_{GetParam().zone};
};

TEST_P(QzTimeZone, GmtToLocalAndBack_IsExact) {
  qz_Time time = parsed(GetParam().gmt);
  const long long moment = time.unix_seconds();
  time.GMT_to_local();
  EXPECT_EQ(text(time), GetParam().local);
  EXPECT_EQ(time.unix_seconds(), moment);
  const qz_Time copy = time;
  EXPECT_EQ(copy.compare_time(parsed(GetParam().gmt)), 0);
  time.local_to_GMT();
  EXPECT_EQ(text(time), GetParam().gmt);
}

TEST_P(QzTimeZone, DaylightSaving_SameInBothModes) {
  qz_Time time = parsed(GetParam().gmt);
  EXPECT_EQ(time.is_daylight_saving(), GetParam().daylight_saving);
  time.GMT_to_local();
  EXPECT_EQ(time.is_daylight_saving(), GetParam().daylight_saving);
}

// An entry stores the negated offset, plus 60 while daylight saving is in effect, as the difference from GMT.
TEST_P(QzTimeZone, OffsetAndDaylightSaving_MakeTheDifferenceFromGmt) {
  qz_Time time = parsed(GetParam().gmt);
  time.GMT_to_local();
  EXPECT_EQ(-time.get_timezone_offset() + (time.is_daylight_saving() ? 60 : 0), GetParam().minutes_east);
}

std::string case_name(const testing::TestParamInfo<ZoneCase>& parameter) {
  std::string name = std::string(parameter.param.zone) + "_" + parameter.param.gmt;
  for (char& character : name) {
    if (std::isalnum(static_cast<unsigned char>(character)) == 0) character = '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Moments, QzTimeZone, testing::ValuesIn(kCases), case_name);

TEST(QzTimeRepeatedHour, BothPasses_AreToldApart) {
  const TimeZone zone("Europe/Berlin");
  qz_Time first = parsed("2026-10-25 00:30:00 GMT");
  qz_Time second = parsed("2026-10-25 01:30:00 GMT");
  first.GMT_to_local();
  second.GMT_to_local();
  EXPECT_EQ(text(first), "2026-10-25 02:30:00");
  EXPECT_EQ(text(second), "2026-10-25 02:30:00");
  EXPECT_LT(first.compare_time(second), 0);
  EXPECT_GT(second.compare_time(first), 0);
  EXPECT_EQ(second.unix_seconds() - first.unix_seconds(), 3600);
}

struct LocalCase {
  const char* zone;
  const char* local;
  const char* either;
  const char* other;
};

// A local time that the clocks skip or show twice: either reading is sound, another is not.
TEST(QzTimeLocalText, SkippedOrRepeated_ReadAsOneOfTheTwoMoments) {
  const LocalCase cases[] = {
      {"Europe/Berlin", "2026-03-29 02:30:00", "2026-03-29 00:30:00 GMT", "2026-03-29 01:30:00 GMT"},
      {"Europe/Berlin", "2026-10-25 02:30:00", "2026-10-25 00:30:00 GMT", "2026-10-25 01:30:00 GMT"},
      {"America/New_York", "2026-03-08 02:30:00", "2026-03-08 06:30:00 GMT", "2026-03-08 07:30:00 GMT"},
      {"America/New_York", "2026-11-01 01:30:00", "2026-11-01 05:30:00 GMT", "2026-11-01 06:30:00 GMT"},
      {"Australia/Lord_Howe", "2026-10-04 02:15:00", "2026-10-03 15:15:00 GMT", "2026-10-03 15:45:00 GMT"},
      {"Australia/Lord_Howe", "2026-04-05 01:45:00", "2026-04-04 14:45:00 GMT", "2026-04-04 15:15:00 GMT"}};
  for (const LocalCase& c : cases) {
    const TimeZone zone(c.zone);
    qz_Time time = parsed(c.local);
    EXPECT_EQ(text(time), c.local) << "the fields stay as they were written";
    const long long moment = time.unix_seconds();
    EXPECT_EQ(time.unix_seconds(), moment) << "asked twice";
    time.local_to_GMT();
    EXPECT_TRUE(text(time) == c.either || text(time) == c.other) << c.zone << " " << c.local << ": " << text(time);
    EXPECT_EQ(time.unix_seconds(), moment);
  }
}

TEST(QzTimeLocalText, Repeated_KeepsItsMomentWhateverIsAskedInBetween) {
  const TimeZone zone("Europe/Berlin");
  const qz_Time repeated = parsed("2026-10-25 02:30:00");
  const long long moment = repeated.unix_seconds();
  for (const char* other : {"2026-01-15 12:00:00", "2026-07-01 12:00:00", "2026-01-15 12:00:00"}) {
    EXPECT_NE(parsed(other).unix_seconds(), moment);
    EXPECT_EQ(repeated.unix_seconds(), moment) << "after " << other;
  }
}

TEST(QzTimeLocalText, PlainLocalTimes_ReadInTheZonesTime) {
  for (const ZoneCase& c : kCases) {
    const TimeZone zone(c.zone);
    qz_Time time = parsed(c.local);
    time.local_to_GMT();
    time.GMT_to_local();
    EXPECT_EQ(text(time), c.local) << c.zone;
  }
}

TEST(QzTimeZones, RandomMoments_AsTheSystemLibraryInEveryZone) {
  SeededRandom random;
  for (const char* name : kZones) {
    const TimeZone zone(name);
    for (int i = 0; i < 2000; ++i) {
      const time_t moment = random.between(1136073600, 1893456000);  // 2006 to 2029
      tm expected = {};
      localtime_r(&moment, &expected);
      char expected_text[32] = "";
      strftime(expected_text, sizeof(expected_text), "%Y-%m-%d %H:%M:%S", &expected);
      qz_Time time = qz_Time::from_unix_seconds(moment);
      time.GMT_to_local();
      ASSERT_EQ(text(time), expected_text) << name;
      ASSERT_EQ(time.is_daylight_saving(), expected.tm_isdst > 0) << name << " " << expected_text;
      ASSERT_EQ(60 * (-time.get_timezone_offset() + (expected.tm_isdst > 0 ? 60 : 0)), expected.tm_gmtoff) << name;
      ASSERT_EQ(time.unix_seconds(), moment) << name;
      time.local_to_GMT();
      ASSERT_EQ(time.unix_seconds(), moment) << name;
    }
  }
}

TEST(QzTimeZones, Offset_MinutesWestInStandardTimeInBothModes) {
  const struct {
    const char* zone;
    int minutes_west;
  } cases[] = {{"UTC", 0}, {"Europe/Berlin", -60}, {"America/New_York", 300}, {"Asia/Kathmandu", -345}};
  for (const auto& c : cases) {
    const TimeZone zone(c.zone);
    for (const char* moment : {"2026-01-15 12:00:00 GMT", "2026-07-01 12:00:00 GMT"}) {
      qz_Time time = parsed(moment);
      EXPECT_EQ(time.get_timezone_offset(), c.minutes_west) << c.zone << " " << moment;
      EXPECT_EQ(time.get_timezone_offset(), timezone / 60) << c.zone << " " << moment;
      time.GMT_to_local();
      EXPECT_EQ(time.get_timezone_offset(), c.minutes_west) << c.zone << " " << moment;
    }
  }
}

TEST(QzTimeZones, PosixRuleText_IsFollowed) {
  const TimeZone zone("ODD-3:17");
  qz_Time time = parsed("2026-11-21 08:15:30 GMT");
  EXPECT_EQ(time.get_timezone_offset(), -197);
  EXPECT_FALSE(time.is_daylight_saving());
  time.GMT_to_local();
  EXPECT_EQ(text(time), "2026-11-21 11:32:30");
}

}  // namespace
