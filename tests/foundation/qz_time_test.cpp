#include "qzlog/qz_time.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <ctime>
#include <string>

#include "tests/support/support.h"

namespace {

using qz_test::SeededRandom;
using qz_test::TimeZone;

constexpr long long kYear0 = -62167219200;     // 0000-01-01 00:00:00 GMT
constexpr long long kYear9999 = 253402300799;  // 9999-12-31 23:59:59 GMT
constexpr long long kSample = 1795248930;      // 2026-11-21 08:15:30 GMT

std::string text(const qz_Time& time) {
  char buffer[128] = "";
  time.print_out(buffer, sizeof(buffer));
  return buffer;
}

void expect_fields(const qz_Time& time, const std::tm& expected, const std::string& note) {
  EXPECT_EQ(time.get_year(), expected.tm_year + 1900) << note;
  EXPECT_EQ(time.get_month(), expected.tm_mon + 1) << note;
  EXPECT_EQ(time.get_day(), expected.tm_mday) << note;
  EXPECT_EQ(time.get_hour(), expected.tm_hour) << note;
  EXPECT_EQ(time.get_minute(), expected.tm_min) << note;
  EXPECT_EQ(time.get_second(), expected.tm_sec) << note;
}

/// Every test runs in a zone that is neither GMT nor a whole number of hours from it.
class QzTime : public testing::Test {
 private:
  TimeZone zone_{"Asia/Kathmandu"};
};

TEST_F(QzTime, Default_IsTheZeroTimeInGmtMode) {
  const qz_Time time;
  EXPECT_EQ(text(time), "1970-01-01 00:00:00 GMT");
  EXPECT_EQ(time.unix_seconds(), 0);
  EXPECT_TRUE(time.is_GMT_time_mode());
}

TEST_F(QzTime, SetZero_IsTheDefaultValueWhateverItWas) {
  qz_Time time = qz_Time::from_unix_seconds(kSample);
  time.GMT_to_local();
  time.set_zero();
  EXPECT_EQ(text(time), text(qz_Time()));
  EXPECT_EQ(time.is_GMT_time_mode(), qz_Time().is_GMT_time_mode());
  EXPECT_EQ(time.compare_time(qz_Time()), 0);
}

TEST_F(QzTime, CalendarFields_OfAKnownMoment) {
  qz_Time time = qz_Time::from_unix_seconds(kSample);
  EXPECT_EQ(text(time), "2026-11-21 08:15:30 GMT");
  time.GMT_to_local();
  EXPECT_EQ(text(time), "2026-11-21 14:00:30");
  EXPECT_EQ(time.get_hour(), 14);
  EXPECT_EQ(time.get_minute(), 0);
}

TEST_F(QzTime, RandomMoments_FieldsAsTheSystemLibrary) {
  SeededRandom random;
  for (int i = 0; i < 5000; ++i) {
    const long long seconds = random.between(kYear0 + 100000, kYear9999 - 100000);
    const std::time_t moment = seconds;
    std::tm expected = {};
    qz_Time time = qz_Time::from_unix_seconds(seconds);
    gmtime_r(&moment, &expected);
    expect_fields(time, expected, "GMT " + std::to_string(seconds));
    time.GMT_to_local();
    localtime_r(&moment, &expected);
    expect_fields(time, expected, "local " + std::to_string(seconds));
    EXPECT_FALSE(time.is_GMT_time_mode());
    EXPECT_EQ(time.unix_seconds(), seconds);
    time.local_to_GMT();
    EXPECT_TRUE(time.is_GMT_time_mode());
    EXPECT_EQ(time.unix_seconds(), seconds);
  }
}

TEST_F(QzTime, MonthBoundaries_FieldsAndTextAgree) {
  const struct {
    long long seconds;
    const char* text;
  } cases[] = {{-1, "1969-12-31 23:59:59 GMT"},         {951782399, "2000-02-28 23:59:59 GMT"},
               {951782400, "2000-02-29 00:00:00 GMT"},  {951868800, "2000-03-01 00:00:00 GMT"},
               {1709164800, "2024-02-29 00:00:00 GMT"}, {4107542400, "2100-03-01 00:00:00 GMT"},
               {4107542399, "2100-02-28 23:59:59 GMT"}, {-2203891200, "1900-03-01 00:00:00 GMT"},
               {kYear0, "0000-01-01 00:00:00 GMT"},     {kYear9999, "9999-12-31 23:59:59 GMT"},
               {2147483647, "2038-01-19 03:14:07 GMT"}, {2147483648, "2038-01-19 03:14:08 GMT"},
               {4294967296, "2106-02-07 06:28:16 GMT"}};
  for (const auto& c : cases) EXPECT_EQ(text(qz_Time::from_unix_seconds(c.seconds)), c.text);
}

TEST_F(QzTime, ConversionToItsOwnMode_ChangesNothing) {
  qz_Time time = qz_Time::from_unix_seconds(kSample);
  time.local_to_GMT();
  EXPECT_EQ(text(time), "2026-11-21 08:15:30 GMT");
  time.GMT_to_local();
  time.GMT_to_local();
  EXPECT_EQ(text(time), "2026-11-21 14:00:30");
  time.local_to_GMT();
  time.local_to_GMT();
  EXPECT_EQ(text(time), "2026-11-21 08:15:30 GMT");
}

TEST_F(QzTime, SetMode_KeepsTheFieldsAndMovesTheMoment) {
  qz_Time time = qz_Time::from_unix_seconds(kSample);
  time.set_GMT_time_mode(false);
  EXPECT_FALSE(time.is_GMT_time_mode());
  EXPECT_EQ(text(time), "2026-11-21 08:15:30");
  EXPECT_EQ(time.unix_seconds(), kSample - 20700);
  time.set_GMT_time_mode(true);
  EXPECT_EQ(text(time), "2026-11-21 08:15:30 GMT");
  EXPECT_EQ(time.unix_seconds(), kSample);
}

TEST_F(QzTime, SetModeOfAConvertedValue_KeepsTheFields) {
  qz_Time time = qz_Time::from_unix_seconds(kSample);
  time.GMT_to_local();
  time.set_GMT_time_mode(false);
  EXPECT_EQ(time.unix_seconds(), kSample);
  time.set_GMT_time_mode(true);
  EXPECT_EQ(text(time), "2026-11-21 14:00:30 GMT");
  EXPECT_EQ(time.unix_seconds(), kSample + 20700);
}

TEST_F(QzTime, Compare_EarlierEqualLater) {
  const qz_Time time = qz_Time::from_unix_seconds(kSample);
  EXPECT_EQ(time.compare_time(time), 0);
  EXPECT_EQ(time.compare_time(qz_Time::from_unix_seconds(kSample)), 0);
  EXPECT_LT(time.compare_time(qz_Time::from_unix_seconds(kSample + 1)), 0);
  EXPECT_GT(time.compare_time(qz_Time::from_unix_seconds(kSample - 1)), 0);
}

TEST_F(QzTime, CompareAcrossModes_ComparesTheMoments) {
  const qz_Time gmt = qz_Time::from_unix_seconds(kSample);
  qz_Time local = gmt;
  local.GMT_to_local();
  EXPECT_EQ(gmt.compare_time(local), 0);
  EXPECT_EQ(local.compare_time(gmt), 0);
  qz_Time later = qz_Time::from_unix_seconds(kSample + 1);
  later.GMT_to_local();
  EXPECT_LT(gmt.compare_time(later), 0);
  EXPECT_GT(later.compare_time(gmt), 0);
}

TEST_F(QzTime, CompareFarApart_DoesNotOverflow) {
  const qz_Time first = qz_Time::from_unix_seconds(kYear0);
  const qz_Time last = qz_Time::from_unix_seconds(kYear9999);
  EXPECT_LT(first.compare_time(last), 0);
  EXPECT_GT(last.compare_time(first), 0);
}

TEST_F(QzTime, CopyAndAssignment_AreValues) {
  qz_Time original = qz_Time::from_unix_seconds(kSample);
  original.GMT_to_local();
  const qz_Time copy(original);
  qz_Time assigned;
  assigned = original;
  original.set_zero();
  for (const qz_Time& time : {copy, assigned}) {
    EXPECT_EQ(text(time), "2026-11-21 14:00:30");
    EXPECT_EQ(time.unix_seconds(), kSample);
  }
}

TEST_F(QzTime, Now_LiesBetweenTheClockBeforeAndAfter) {
  const std::time_t before = std::time(nullptr);
  const qz_Time now = qz_Time::now();
  const std::time_t after = std::time(nullptr);
  EXPECT_GE(now.unix_seconds(), before);
  EXPECT_LE(now.unix_seconds(), after + 1);
  EXPECT_TRUE(now.is_GMT_time_mode());
}

// Whatever the years are, the members stay defined: the sanitizers watch this one.
TEST_F(QzTime, MomentsFarOutside_PrintATerminatedText) {
  for (const long long seconds : {LLONG_MIN, LLONG_MIN / 2, kYear0 - 1, kYear9999 + 1, LLONG_MAX / 2, LLONG_MAX}) {
    qz_Time time = qz_Time::from_unix_seconds(seconds);
    for (int round = 0; round < 3; ++round) {
      char buffer[130];
      std::memset(buffer, '#', sizeof(buffer));
      time.print_out(buffer, 128);
      EXPECT_NE(std::memchr(buffer, '\0', 128), nullptr);
      EXPECT_EQ(buffer[128], '#');
      EXPECT_EQ(time.compare_time(time), 0);
      EXPECT_EQ(time.get_timezone_offset(), time.get_timezone_offset());
      round % 2 == 0 ? time.GMT_to_local() : time.local_to_GMT();
    }
  }
}

}  // namespace
