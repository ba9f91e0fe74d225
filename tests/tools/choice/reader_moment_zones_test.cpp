#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "tests/support/support.h"
#include "tools/choice/reader_moment.h"

namespace {

using qzlog_tool::find_moment;
using qzlog_tool::process_clock;

// Two of the south, half an hour, quarters, changes at midnight, a day left out, none at all.
constexpr const char* kZones[] = {"Europe/Berlin",       "America/New_York", "America/Sao_Paulo", "America/Havana",
                                  "Australia/Lord_Howe", "Asia/Kathmandu",   "Africa/Cairo",      "Asia/Beirut",
                                  "Pacific/Apia",        "Pacific/Chatham",  "Africa/Casablanca", "UTC"};

constexpr std::time_t kMinute = 60;
constexpr std::time_t kHour = 3600;
constexpr std::time_t kDay = 86400;

std::tm local(std::time_t moment) {
  std::tm result = {};
  localtime_r(&moment, &result);
  return result;
}

/// As clocks show it, up to the minute.
std::string clock_text(std::time_t moment) {
  const std::tm at = local(moment);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &at);
  return text;
}

std::string date_text(std::time_t moment) { return clock_text(moment).substr(0, 10); }

/// The moments at which clocks of the process's zone change in fourteen years.
std::vector<std::time_t> find_changes() {
  std::tm begin = {};
  begin.tm_year = 110;
  begin.tm_mday = 1;
  std::vector<std::time_t> found;
  const std::time_t first = timegm(&begin);
  for (std::time_t at = first; at < first + 14 * 365 * kDay; at += 6 * kHour) {
    const long before = local(at).tm_gmtoff;
    if (before == local(at + 6 * kHour).tm_gmtoff) continue;
    std::time_t change = at;
    while (local(change).tm_gmtoff == before) change += kMinute;
    found.push_back(change);
  }
  return found;
}

const std::vector<std::time_t>& changes(const std::string& zone) {
  static std::map<std::string, std::vector<std::time_t>> found;
  const auto [place, is_new] = found.try_emplace(zone);
  if (is_new) place->second = find_changes();
  return place->second;
}

/// The first moment around a change at which clocks show the text, or the one at which they would have shown it without
/// the change.
std::time_t plain_moment(const std::string& text, std::time_t change) {
  const std::time_t around = 2 * kHour + std::abs(local(change).tm_gmtoff - local(change - 1).tm_gmtoff);
  for (std::time_t at = change - around; at < change + around; at += kMinute) {
    if (clock_text(at) == text) return at;
  }
  std::tm calendar = {};
  strptime((text + ":00").c_str(), "%Y-%m-%d %H:%M:%S", &calendar);
  return timegm(&calendar) - local(change - 1).tm_gmtoff;
}

/// The first moment of the day on which clocks show `moment`.
std::time_t plain_beginning_of_day(std::time_t moment) {
  const std::string date = date_text(moment);
  std::time_t first = moment - moment % kMinute;
  for (std::time_t at = first; at > moment - 26 * kHour; at -= kMinute) {
    if (date_text(at) == date) first = at;
  }
  return first;
}

class ReaderMomentZones : public ::testing::TestWithParam<const char*> {
 protected:
  qz_test::TimeZone zone_{GetParam()};
};

TEST_P(ReaderMomentZones, ClocksAroundChanges_AreReadAsThePlainModelReadsThem) {
  for (const std::time_t change : changes(GetParam())) {
    const std::time_t before = local(change - 1).tm_gmtoff;
    const std::time_t after = local(change).tm_gmtoff;
    // The times that clocks show, those that they pass over, and some around them.
    for (std::time_t clock = change + std::min(before, after) - kHour; clock < change + std::max(before, after) + kHour;
         clock += 15 * kMinute) {
      std::tm calendar = {};
      gmtime_r(&clock, &calendar);
      char text[32];
      std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &calendar);
      ASSERT_EQ(find_moment(text, process_clock(0)), plain_moment(text, change)) << text;
    }
  }
}

TEST_P(ReaderMomentZones, DaysAroundChanges_BeginWithTheirFirstMoment) {
  for (const std::time_t change : changes(GetParam())) {
    for (std::time_t now = change - 30 * kHour; now < change + 30 * kHour; now += 9 * kHour + 11 * kMinute) {
      const std::time_t today = plain_beginning_of_day(now);
      ASSERT_EQ(find_moment("today", process_clock(now)), today) << clock_text(now);
      ASSERT_EQ(find_moment(date_text(now), process_clock(0)), today) << clock_text(now);
      if (GetParam() != std::string("Pacific/Apia")) {  // which left out a day
        ASSERT_EQ(find_moment("yesterday", process_clock(now)), plain_beginning_of_day(today - 1)) << clock_text(now);
      }
    }
  }
}

TEST_P(ReaderMomentZones, SpansOfTime_AreThoseOfASteadyClock) {
  for (const std::time_t change : changes(GetParam())) {
    ASSERT_EQ(find_moment("-2h", process_clock(change + kHour)), change - kHour);
    ASSERT_EQ(find_moment("-1d", process_clock(change + kHour)), change + kHour - kDay);
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, ReaderMomentZones, testing::ValuesIn(kZones), [](const auto& tested) {
  std::string name = tested.param;
  for (char& character : name) {
    if (character == '/') character = '_';
  }
  return name;
});

TEST(ReaderMomentLeftOutDay, ZoneThatLeftOutADay_CountsItsTimesOn) {
  const qz_test::TimeZone zone("Pacific/Apia");
  const auto after = find_moment("2011-12-31", process_clock(0));
  EXPECT_EQ(find_moment("2011-12-30", process_clock(0)), after);
  EXPECT_EQ(find_moment("2011-12-29 23:59", process_clock(0)), *after - 60);
  EXPECT_EQ(find_moment("yesterday", process_clock(*after + 3600)), after);
}

}  // namespace
