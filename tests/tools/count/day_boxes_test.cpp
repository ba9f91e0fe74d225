#include "tools/count/day_boxes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

namespace {

using qzlog_tool::CalendarDay;
using qzlog_tool::DayBox;
using std::chrono::days;
using std::chrono::sys_days;

bool has(const DayBox& box, CalendarDay day) {
  return box.from.year() <= day.year() && day.year() <= box.to.year() && box.from.month() <= day.month() &&
         day.month() <= box.to.month() && box.from.day() <= day.day() && day.day() <= box.to.day();
}

void expect_each_day_once(CalendarDay from, CalendarDay to) {
  const std::vector<DayBox> boxes = qzlog_tool::boxes_of_interval(from, to);
  EXPECT_LE(boxes.size(), 15U);
  for (const DayBox& box : boxes) {
    EXPECT_TRUE(box.from.ok() && box.to.ok());
    EXPECT_FALSE(box.is_empty());
  }
  for (sys_days each = sys_days(from) - days(70); each <= sys_days(to) + days(70); each += days(1)) {
    std::size_t count = 0;
    for (const DayBox& box : boxes) count += has(box, each) ? 1 : 0;
    const std::size_t expected = sys_days(from) <= each && each <= sys_days(to) ? 1 : 0;
    ASSERT_EQ(count, expected) << qzlog_tool::day_text(each) << " of " << qzlog_tool::day_text(from) << " to "
                               << qzlog_tool::day_text(to);
  }
}

TEST(DayBox, CornersAcrossAFieldsTurn_AreEmpty) {
  const auto box = [](const char* from, const char* to) {
    return DayBox{*qzlog_tool::parse_day(from), *qzlog_tool::parse_day(to)};
  };
  EXPECT_TRUE(box("2025-12-25", "2026-01-05").is_empty());
  EXPECT_TRUE(box("2026-01-20", "2026-03-10").is_empty());
  EXPECT_FALSE(box("2026-01-10", "2026-03-20").is_empty());
  EXPECT_FALSE(box("2026-01-10", "2026-01-10").is_empty());
}

TEST(BoxesOfInterval, RandomDays_HaveEachDayOnce) {
  std::mt19937 random(20261121);
  for (const int longest : {1, 40, 400, 3000}) {
    std::uniform_int_distribution<int> offset(0, longest);
    std::uniform_int_distribution<int> begin(0, 10'000);
    for (int round = 0; round < 60; ++round) {
      const sys_days from = sys_days(CalendarDay(std::chrono::year(2000) / 1 / 1)) + days(begin(random));
      ASSERT_NO_FATAL_FAILURE(expect_each_day_once(from, from + days(offset(random))));
    }
  }
}

TEST(BoxesOfInterval, EndsOfTheCalendar_AreIncluded) {
  const std::vector<DayBox> boxes =
      qzlog_tool::boxes_of_interval(*qzlog_tool::parse_day("0001-01-01"), *qzlog_tool::parse_day("9999-12-31"));
  ASSERT_FALSE(boxes.empty());
  EXPECT_TRUE(has(boxes.front(), *qzlog_tool::parse_day("0001-01-01")));
  EXPECT_TRUE(has(boxes.back(), *qzlog_tool::parse_day("9999-12-31")));
}

}  // namespace
