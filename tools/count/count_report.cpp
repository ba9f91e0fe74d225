#include "tools/count/count_report.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "tools/report/finding_json.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kTotal = "total";
constexpr std::string_view kNoName = "-";

// What a table's line shows beside the day; an empty text is shown as blanks.
struct Row {
  std::string day;
  std::string key;
  std::string name;
  std::string count;
};

std::string name_of(std::int32_t key, const KeyNames* names) {
  if (names == nullptr) return "";
  const auto found = names->find(key);
  return found != names->end() ? found->second : std::string(kNoName);
}

Row total_row(std::string day, std::string key, std::uint64_t count) {
  return {std::move(day), std::move(key), "", std::to_string(count)};
}

// Calls `use` with one row after the other, so that they need not all be held at once.
template <class Use>
void for_each_row(const CountReport& report, const KeyNames* names, Use use) {
  auto day_total = report.days.begin();
  for (std::size_t index = 0; index < report.counts.size(); ++index) {
    const DayCount& count = report.counts[index];
    const std::string day = day_text(count.day);
    use(Row{day, std::to_string(count.key), name_of(count.key, names), std::to_string(count.count)});
    if (index + 1 < report.counts.size() && report.counts[index + 1].day == count.day) continue;
    use(total_row(day, std::string(kTotal), (day_total++)->count));
  }
  for (const auto& [key, count] : report.keys) {
    use(Row{std::string(kTotal), std::to_string(key), name_of(key, names), std::to_string(count)});
  }
  use(total_row(std::string(kTotal), "", report.total));
}

struct Widths {
  std::size_t day = 0;
  std::size_t key = 0;
  std::size_t name = 0;
  std::size_t count = 0;

  void fit(const Row& row) {
    day = std::max(day, row.day.size());
    key = std::max(key, row.key.size());
    name = std::max(name, row.name.size());
    count = std::max(count, row.count.size());
  }
};

void append_left(std::string& line, const std::string& text, std::size_t width) {
  line.append(text).append(width - text.size(), ' ');
}

void append_right(std::string& line, const std::string& text, std::size_t width) {
  line.append(width - text.size(), ' ').append(text);
}

void write_row(const Row& row, const Widths& widths, BufferedOutput& output) {
  std::string line;
  append_left(line, row.day, widths.day);
  append_right(line, row.key, widths.key + 2);
  if (widths.name != 0) {
    line += "  ";
    append_left(line, row.name, widths.name);
  }
  append_right(line, row.count, widths.count + 2);
  output.write_line(line);
}

// Entry names are capitals, digits and underscores: nothing in them has to be escaped.
std::string json_key(std::int32_t key, const KeyNames* names) {
  std::string text = "\"key\": " + std::to_string(key);
  if (names == nullptr) return text;
  const auto found = names->find(key);
  return text + ", \"name\": " + (found != names->end() ? '"' + found->second + '"' : "null");
}

/// Writes `"NAME": [...],` with one line for each element of `range`.
template <class Range, class Text>
void write_json_array(const std::string& name, const Range& range, Text text, BufferedOutput& output) {
  if (std::empty(range)) {
    output.write_line("  \"" + name + "\": [],");
    return;
  }
  output.write_line("  \"" + name + "\": [");
  std::size_t left = std::size(range);
  for (const auto& element : range) output.write_line("    {" + text(element) + (--left != 0 ? "}," : "}"));
  output.write_line("  ],");
}

std::string json_count(std::uint64_t count) { return ", \"count\": " + std::to_string(count); }
std::string json_day(CalendarDay day) { return "\"day\": \"" + day_text(day) + '"'; }

}  // namespace

CountReport make_count_report(std::span<const DayCount> counts) {
  CountReport report;
  report.counts = counts;
  for (const DayCount& count : counts) {
    if (report.days.empty() || report.days.back().day != count.day) report.days.push_back({count.day, 0});
    report.days.back().count += count.count;
    report.keys[count.key] += count.count;
    report.total += count.count;
  }
  return report;
}

void write_count_table(const CountReport& report, const KeyNames* names, BufferedOutput& output) {
  const Row header = {"day", "key", names != nullptr ? "name" : "", "count"};
  Widths widths;
  widths.fit(header);
  for_each_row(report, names, [&](const Row& row) { widths.fit(row); });
  write_row(header, widths, output);
  for_each_row(report, names, [&](const Row& row) { write_row(row, widths, output); });
}

void write_count_json(const CountReport& report, const KeyNames* names, const CountDamage& damage,
                      BufferedOutput& output) {
  output.write_line("{");
  for (const std::string& line : json_result_beginning(damage.findings)) output.write_line(line);
  write_json_array(
      "counts", report.counts,
      [&](const DayCount& count) {
        return json_day(count.day) + ", " + json_key(count.key, names) + json_count(count.count);
      },
      output);
  write_json_array(
      "days", report.days, [](const DayTotal& total) { return json_day(total.day) + json_count(total.count); }, output);
  write_json_array(
      "keys", report.keys, [&](const auto& total) { return json_key(total.first, names) + json_count(total.second); },
      output);
  output.write_line("  \"total\": " + std::to_string(report.total) + ",");
  output.write_line("  \"damaged\": " + std::to_string(damage.records));
  output.write_line("}");
}

}  // namespace qzlog_tool
