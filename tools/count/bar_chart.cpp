#include "tools/count/bar_chart.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ostream>
#include <string_view>

namespace qzlog_tool {

namespace {

constexpr std::string_view kFullBlock = "\u2588";
// From one eighth to seven.
constexpr std::string_view kPartBlocks[] = {"\u258F", "\u258E", "\u258D", "\u258C", "\u258B", "\u258A", "\u2589"};
constexpr std::uint64_t kParts = 8;
constexpr std::size_t kDateColumns = 10;
constexpr std::size_t kGapColumns = 2;
constexpr int kLongestShownGap = 6;

class ChartWriter {
 public:
  ChartWriter(std::uint64_t maximum, std::size_t columns, std::ostream& out)
      : maximum_(maximum), count_columns_(std::to_string(maximum).size()), out_(out) {
    const std::size_t text_columns = kDateColumns + kGapColumns + count_columns_ + 1;
    bar_columns_ = columns > text_columns ? columns - text_columns : 1;
  }

  void write_day(CalendarDay day, std::uint64_t count) {
    const std::string number = std::to_string(count);
    std::string line = day_text(day).append(kGapColumns + count_columns_ - number.size(), ' ').append(number);
    if (count != 0) line.append(" ").append(bar(count, maximum_, bar_columns_));
    out_ << line << '\n';
  }

  void write_gap(std::chrono::sys_days after, std::chrono::sys_days before) {
    const auto empty_days = (before - after).count() - 1;
    if (empty_days > kLongestShownGap) {
      out_ << "(" << empty_days << " days without a count)\n";
      return;
    }
    for (std::chrono::sys_days day = after + std::chrono::days(1); day < before; day += std::chrono::days(1)) {
      write_day(day, 0);
    }
  }

 private:
  std::uint64_t maximum_;
  std::size_t count_columns_;
  std::size_t bar_columns_ = 1;
  std::ostream& out_;
};

}  // namespace

std::string bar(std::uint64_t count, std::uint64_t maximum, std::size_t columns) {
  if (count == 0 || maximum == 0) return "";
  const double share = static_cast<double>(count) / static_cast<double>(maximum);
  const double exact = share * static_cast<double>(columns * kParts);
  const auto parts = std::max(static_cast<std::uint64_t>(std::llround(exact)), std::uint64_t{1});
  std::string text;
  for (std::uint64_t block = 0; block < parts / kParts; ++block) text += kFullBlock;
  if (parts % kParts != 0) text += kPartBlocks[parts % kParts - 1];
  return text;
}

void write_bar_chart(std::span<const DayTotal> days, std::size_t columns, std::ostream& out) {
  if (days.empty()) return;
  const auto largest = std::max_element(
      days.begin(), days.end(), [](const DayTotal& left, const DayTotal& right) { return left.count < right.count; });
  ChartWriter writer(largest->count, columns, out);
  for (std::size_t index = 0; index < days.size(); ++index) {
    if (index > 0) writer.write_gap(days[index - 1].day, days[index].day);
    writer.write_day(days[index].day, days[index].count);
  }
}

}  // namespace qzlog_tool
