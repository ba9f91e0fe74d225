#include "tools/count/bar_chart.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tools/system/file_descriptor.h"

namespace {

using qzlog_tool::bar;
using qzlog_tool::DayTotal;

TEST(Bar, Eighths_AreShownExactly) {
  const char* const bars[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉", "█", "█▏"};
  for (std::uint64_t count = 0; count < std::size(bars); ++count) EXPECT_EQ(bar(count, 80, 10), bars[count]) << count;
  EXPECT_EQ(bar(80, 80, 10), "██████████");
  EXPECT_EQ(bar(79, 80, 10), "█████████▉");
}

TEST(Bar, Least_IsAnEighth) {
  EXPECT_EQ(bar(1, 1'000'000, 10), "▏");
  EXPECT_EQ(bar(1, 18446744073709551615U, 1), "▏");
}

TEST(Bar, LargestCounts_FillTheColumns) {
  EXPECT_EQ(bar(18446744073709551615U, 18446744073709551615U, 3), "███");
  EXPECT_EQ(bar(9223372036854775808U, 18446744073709551615U, 2), "█");
}

TEST(Bar, NothingCounted_IsEmpty) { EXPECT_EQ(bar(0, 0, 10), ""); }

std::string chart(const std::vector<DayTotal>& days, std::size_t columns) {
  const qz_test::TempDir folder;
  const std::string path = folder.write("chart", "");
  const qzlog_tool::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  qzlog_tool::BufferedOutput output(file.get(), "chart");
  write_bar_chart(days, columns, output);
  output.flush();
  return folder.read("chart");
}

DayTotal total(const char* day, std::uint64_t count) { return {*qzlog_tool::parse_day(day), count}; }

TEST(BarChart, NoDays_IsEmpty) { EXPECT_EQ(chart({}, 80), ""); }

TEST(BarChart, ShortGap_IsShownDayByDay) {
  EXPECT_EQ(chart({total("2024-02-27", 10), total("2024-03-01", 5)}, 25),
            "2024-02-27  10 ██████████\n2024-02-28   0\n2024-02-29   0\n2024-03-01   5 █████\n");
}

TEST(BarChart, GapOfSixDaysAndOfSeven) {
  EXPECT_EQ(chart({total("2026-12-30", 1), total("2027-01-06", 1)}, 16),
            "2026-12-30  1 ██\n2026-12-31  0\n2027-01-01  0\n2027-01-02  0\n2027-01-03  0\n2027-01-04  0\n"
            "2027-01-05  0\n2027-01-06  1 ██\n");
  EXPECT_EQ(chart({total("2026-12-30", 1), total("2027-01-07", 1)}, 16),
            "2026-12-30  1 ██\n(7 days without a count)\n2027-01-07  1 ██\n");
}

TEST(BarChart, CountsOfZero_HaveNoBar) { EXPECT_EQ(chart({total("2026-12-30", 0)}, 40), "2026-12-30  0\n"); }

TEST(BarChart, NoRoomForBars_OneColumnIsUsedAllTheSame) {
  EXPECT_EQ(chart({total("2026-12-30", 1000), total("2026-12-31", 500)}, 1),
            "2026-12-30  1000 █\n2026-12-31   500 ▌\n");
}

}  // namespace
