#include "tools/stats/stats_output.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lines/level_name.h"
#include "tools/compiler/text/line_cut.h"
#include "tools/count/bar_chart.h"
#include "tools/count/calendar_day.h"
#include "tools/report/finding_json.h"
#include "tools/report/json_stream.h"
#include "tools/report/text_table.h"
#include "tools/shown/cell_text.h"
#include "tools/shown/csv_value.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::JsonListStream;
using qzlog_compiler::JsonObjectStream;
using qzlog_compiler::TextRow;
using Row = GroupTable::Row;

constexpr qzlog_compiler::JsonLayout kItemLayout = {", ", "", "", " "};
constexpr const char* kNoValue = "-";
constexpr std::size_t kWidestKey = 40;
constexpr std::size_t kNarrowestBar = 6;
constexpr std::size_t kWidestBar = 40;
constexpr std::size_t kGap = 2;

constexpr unsigned kMedian = 50;
constexpr unsigned kNearlyAll = 99;

template <class... Form>
std::string digits(double number, Form... form) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, number, form...).ptr};
}

double share_of(const Group& group, const StatsReport& report) {
  return report.total.count == 0 ? 0 : static_cast<double>(group.count) / static_cast<double>(report.total.count);
}

/// As programs get it: six digits behind the point are enough to tell groups of a million lines.
std::string share_digits(const Group& group, const StatsReport& report) {
  constexpr double kDigits = 1e6;
  return digits(std::round(share_of(group, report) * kDigits) / kDigits);
}

std::string_view name_of(CountedEvent counted, const StatsTexts& texts) {
  const KnownEvent* const event = texts.known.find_event(counted.id);
  return event != nullptr && counted.name < event->names.size() ? std::string_view(event->names[counted.name])
                                                                : std::string_view();
}

/// Of a group that is one, as people and programs see it.
long long number_of(const GroupKey& key, GroupBy by) {
  return by == GroupBy::kEvent ? CountedEvent::of(key.number).id : key.number;
}

std::string time_of(long long moment, const StatsTexts& texts) {
  std::string text;
  texts.times.append(moment, text);
  return text;
}

std::string day_of(long long day) {
  return day_text(CalendarDay(std::chrono::sys_days(std::chrono::days(static_cast<int>(day)))));
}

/// What a group is called where one text does; of events and levels the number.
std::string key_text(const GroupKey& key, GroupBy by, const StatsTexts& texts) {
  if (key.kind == GroupKey::Kind::kNone) return "";
  if (by == GroupBy::kHour) return time_of(key.number, texts);
  if (by == GroupBy::kDay) return day_of(key.number);
  return key.kind == GroupKey::Kind::kNumber ? std::to_string(number_of(key, by)) : std::string(key.text);
}

/// What a key is called in JSON and CSV.
std::string_view key_name(GroupBy by) {
  switch (by) {
    case GroupBy::kEvent:
      return "id";
    case GroupBy::kLevel:
      return "level";
    case GroupBy::kHour:
      return "hour";
    case GroupBy::kDay:
      return "day";
    case GroupBy::kWriter:
      return "writer";
    case GroupBy::kAttribute:
      return "value";
  }
  return "";
}

/// The second name that a key has; empty where it has none.
std::string_view second_name(GroupBy by) {
  return by == GroupBy::kEvent ? "name" : by == GroupBy::kLevel ? "level_name" : "";
}

std::string_view second_text(const GroupKey& key, GroupBy by, const StatsTexts& texts) {
  if (by == GroupBy::kLevel) return qzlog::level_name(static_cast<unsigned>(key.number));
  return by == GroupBy::kEvent ? name_of(CountedEvent::of(key.number), texts) : std::string_view();
}

/// What is told of numbers, in the order in which it is told.
constexpr const char* kNumberNames[] = {"minimum", "median", "p99", "maximum", "mean"};

/// The same in digits; nothing of no numbers.
std::vector<std::string> number_digits(const NumberSummary& numbers) {
  if (numbers.count() == 0) return {};
  return {digits(numbers.minimum()), digits(numbers.quantile(kMedian)), digits(numbers.quantile(kNearlyAll)),
          digits(numbers.maximum()), digits(numbers.mean())};
}

// For people.

/// A value on its line, not too wide, that no terminal takes for a command.
std::string cell_of(std::string_view value) {
  if (value.empty()) return "\"\"";
  std::string safe;
  append_safely(value, CellSafety::kTerminal, safe);
  std::string cell;
  append_cell(safe, {CellAlignment::kLeft, 0, kWidestKey}, cell);
  return cell;
}

/// To the minute, on the reader's clock.
std::string minute_of(long long moment, const StatsTexts& texts) {
  std::string text;
  texts.times.append_local(moment, text);
  constexpr std::size_t kSeconds = 3;
  if (text.size() > kSeconds) text.resize(text.size() - kSeconds);
  return text;
}

std::string percent_of(const Group& group, const StatsReport& report) {
  return digits(share_of(group, report) * 100, std::chars_format::fixed, 1) + " %";
}

/// With a digit behind the point where there are many before it.
std::string short_digits(double number) {
  constexpr int kDigits = 6;
  constexpr double kMany = 1e5;
  constexpr double kTooMany = 1e15;
  if (std::abs(number) >= kTooMany) return digits(number, std::chars_format::general, kDigits);
  if (number == std::floor(number)) return digits(number, std::chars_format::fixed, 0);
  if (std::abs(number) >= kMany) return digits(number, std::chars_format::fixed, 1);
  return digits(number, std::chars_format::general, kDigits);
}

/// Everything of a table but its bars.
class TableTexts {
 public:
  TableTexts(const StatsReport& report, const StatsTexts& texts)
      : report_(report), texts_(texts), has_numbers_(!report.counted.numbers_of.empty()) {}

  TextRow titles() const {
    const GroupBy by = report_.counted.by;
    TextRow row;
    if (by == GroupBy::kAttribute) {
      row.push_back((report_.counted.has_integers ? ">" : "") + cell_of(report_.counted.attribute));
    } else {
      const bool is_number = by == GroupBy::kEvent || by == GroupBy::kLevel;
      row.push_back((is_number ? ">" : "") + std::string(key_name(by)));
    }
    if (!second_name(by).empty()) row.emplace_back("name");
    row.emplace_back(">count");
    if (has_numbers_) {
      for (const char* const title : {">values", ">minimum", ">median", ">99 %", ">maximum", ">mean"}) {
        row.emplace_back(title);
      }
    } else {
      for (const char* const title : {">share", "first seen", "last seen"}) row.emplace_back(title);
    }
    return row;
  }

  TextRow row(std::size_t index) const {
    if (index < report_.rows.size()) return row(report_.rows[index]);
    if (index == report_.rows.size() && has_rest()) return row("others", report_.rest);
    return row("total", report_.total);
  }
  std::size_t size() const { return report_.rows.size() + (has_rest() ? 2 : 1); }

 private:
  bool has_rest() const { return report_.rest.count != 0; }

  TextRow row(const Row& row) const {
    const GroupBy by = report_.counted.by;
    TextRow cells;
    if (row.key.kind == GroupKey::Kind::kNone) {
      cells.emplace_back(kNoValue);
    } else {
      cells.push_back(cell_of(key_text(row.key, by, texts_)));
    }
    if (!second_name(by).empty()) {
      const std::string_view name = second_text(row.key, by, texts_);
      cells.push_back(name.empty() ? kNoValue : cell_of(name));
    }
    add_values(*row.group, cells);
    return cells;
  }

  TextRow row(const char* name, const Group& group) const {
    TextRow cells = {name};
    if (!second_name(report_.counted.by).empty()) cells.emplace_back();
    add_values(group, cells);
    return cells;
  }

  void add_values(const Group& group, TextRow& cells) const {
    cells.push_back(std::to_string(group.count));
    if (has_numbers_) return add_numbers(group.numbers, cells);
    cells.push_back(percent_of(group, report_));
    cells.push_back(group.has_moment() ? minute_of(group.first, texts_) : kNoValue);
    cells.push_back(group.has_moment() ? minute_of(group.last, texts_) : kNoValue);
  }

  static void add_numbers(const NumberSummary& numbers, TextRow& cells) {
    cells.push_back(std::to_string(numbers.count()));
    if (numbers.count() == 0) {
      cells.insert(cells.end(), std::size(kNumberNames), kNoValue);
      return;
    }
    for (const double number : {numbers.minimum(), numbers.quantile(kMedian), numbers.quantile(kNearlyAll),
                                numbers.maximum(), numbers.mean()}) {
      cells.push_back(short_digits(number));
    }
  }

  const StatsReport& report_;
  const StatsTexts& texts_;
  bool has_numbers_;
};

/// How wide bars may be: what the other columns leave; 0 where that is too little.
std::size_t bar_columns(const TableTexts& texts, std::size_t columns) {
  std::vector<std::size_t> widths;
  const auto fit = [&widths](const TextRow& row, std::size_t extra) {
    widths.resize(row.size());
    for (std::size_t cell = 0; cell < row.size(); ++cell) {
      const std::size_t width = qzlog_compiler::column_count(row[cell]);
      widths[cell] = std::max(widths[cell], width - (row[cell].starts_with('>') ? extra : 0));
    }
  };
  fit(texts.titles(), 1);
  for (std::size_t index = 0; index < texts.size(); ++index) fit(texts.row(index), 0);
  std::size_t taken = kGap * widths.size();
  for (const std::size_t width : widths) taken += width;
  return columns >= taken + kNarrowestBar ? std::min(columns - taken, kWidestBar) : 0;
}

std::string sentence(std::uint64_t count, const char* one, const char* many, const StatsRemarks& remarks) {
  if (count == 0) return "";
  return std::to_string(count) + (count == 1 ? one : many) + (remarks.has_where ? ", whatever --where asks\n" : "\n");
}

// For programs.

void add_numbers(const NumberSummary& numbers, JsonObjectStream& json) {
  JsonObjectStream object(json.member("numbers"), kItemLayout);
  object.number("count", numbers.count());
  const std::vector<std::string> values = number_digits(numbers);
  for (std::size_t index = 0; index < std::size(kNumberNames); ++index) {
    if (values.empty()) {
      object.null(kNumberNames[index]);
    } else {
      object.member(kNumberNames[index]) << values[index];
    }
  }
  object.member("error") << digits(numbers.error());
  object.end();
}

void add_moment(const char* name, bool is_there, long long moment, const StatsTexts& texts, JsonObjectStream& json) {
  is_there ? json.text(name, time_of(moment, texts)) : json.null(name);
}

void add_values(const Group& group, const StatsReport& report, const StatsTexts& texts, JsonObjectStream& json) {
  json.number("count", group.count);
  json.member("share") << share_digits(group, report);
  add_moment("first", group.has_moment(), group.first, texts, json);
  add_moment("last", group.has_moment(), group.last, texts, json);
  if (!report.counted.numbers_of.empty()) add_numbers(group.numbers, json);
}

void add_key(const GroupKey& key, GroupBy by, const StatsTexts& texts, JsonObjectStream& json) {
  const std::string_view name = key_name(by);
  if (key.kind == GroupKey::Kind::kNone) {
    json.null(name);
  } else if (key.kind == GroupKey::Kind::kNumber && by != GroupBy::kHour && by != GroupBy::kDay) {
    json.signed_number(name, number_of(key, by));
  } else {
    json.text(name, key_text(key, by, texts));
  }
  if (second_name(by).empty()) return;
  const std::string_view second = second_text(key, by, texts);
  second.empty() ? json.null(second_name(by)) : json.text(second_name(by), second);
}

void add_sum(const char* name, const Group& group, const StatsReport& report, const StatsTexts& texts,
             JsonObjectStream& json) {
  JsonObjectStream sum(json.member(name), kItemLayout);
  add_values(group, report, texts, sum);
  sum.end();
}

void add_groups(const StatsReport& report, const StatsTexts& texts, JsonObjectStream& json) {
  JsonListStream groups(json.member("groups"), qzlog_compiler::kResultListLayout);
  for (const Row& row : report.rows) {
    JsonObjectStream group(groups.item(), kItemLayout);
    add_key(row.key, report.counted.by, texts, group);
    add_values(*row.group, report, texts, group);
    if (report.missed != 0) group.number("missed", row.group->missed);
    group.end();
  }
  groups.end();
}

void add_csv_record(const std::vector<std::string>& fields, std::ostream& out) {
  std::string record;
  for (std::size_t index = 0; index < fields.size(); ++index) {
    if (index > 0) record += ',';
    append_csv(fields[index], record);
  }
  out << record << kCsvEnd;
}

void add_csv_values(const Group& group, const StatsReport& report, const StatsTexts& texts,
                    std::vector<std::string>& fields) {
  fields.push_back(std::to_string(group.count));
  fields.push_back(share_digits(group, report));
  fields.push_back(group.has_moment() ? time_of(group.first, texts) : "");
  fields.push_back(group.has_moment() ? time_of(group.last, texts) : "");
  if (report.counted.numbers_of.empty()) return;
  fields.push_back(std::to_string(group.numbers.count()));
  std::vector<std::string> values = number_digits(group.numbers);
  values.resize(std::size(kNumberNames));
  fields.insert(fields.end(), values.begin(), values.end());
}

std::vector<std::string> csv_heading(const StatsReport& report) {
  const GroupBy by = report.counted.by;
  std::vector<std::string> names = {std::string(key_name(by))};
  if (!second_name(by).empty()) names.emplace_back(second_name(by));
  for (const char* const name : {"count", "share", "first", "last"}) names.emplace_back(name);
  if (!report.counted.numbers_of.empty()) {
    names.emplace_back("values");
    names.insert(names.end(), std::begin(kNumberNames), std::end(kNumberNames));
  }
  names.emplace_back("kind");
  return names;
}

std::string_view by_name(GroupBy by) {
  return by == GroupBy::kEvent ? "event" : by == GroupBy::kAttribute ? "attribute" : key_name(by);
}

}  // namespace

void write_stats_table(const StatsReport& report, const StatsRemarks& remarks, const StatsTexts& texts,
                       std::size_t columns, bool cut, std::ostream& out) {
  const TableTexts table(report, texts);
  const std::size_t bars = bar_columns(table, columns);
  TextRow titles = table.titles();
  titles.emplace_back();
  const auto row = [&](std::size_t index) {
    TextRow cells = table.row(index);
    const bool has_bar = bars != 0 && index < report.rows.size();
    cells.push_back(has_bar ? bar(report.rows[index].group->count, report.largest, bars) : "");
    return cells;
  };
  qzlog_compiler::write_text_table({titles, table.size(), row, qzlog_compiler::kAnyWidth}, 0, cut ? columns : 0, out);
  out << sentence(remarks.lost, " entry was lost", " entries were lost", remarks)
      << sentence(remarks.held, " entry was held back", " entries were held back", remarks);
}

void write_stats_json(const StatsReport& report, const StatsRemarks& remarks, const StatsTexts& texts,
                      std::ostream& out) {
  JsonObjectStream json(out, qzlog_compiler::kResultLayout);
  add_json_beginning(remarks.findings, json);
  json.text("by", by_name(report.counted.by));
  if (report.counted.by == GroupBy::kAttribute) json.text("attribute", report.counted.attribute);
  if (!report.counted.numbers_of.empty()) json.text("of", report.counted.numbers_of);
  add_groups(report, texts, json);
  if (report.rest.count != 0) add_sum("rest", report.rest, report, texts, json);
  add_sum("total", report.total, report, texts, json);
  json.number("lost", remarks.lost);
  json.number("held", remarks.held);
  json.number("wrong", remarks.wrong);
  json.end();
  out << '\n';
}

void write_stats_csv(const StatsReport& report, const StatsTexts& texts, std::ostream& out) {
  const GroupBy by = report.counted.by;
  add_csv_record(csv_heading(report), out);
  const auto add = [&](std::string key, std::string_view second, const char* kind, const Group& group) {
    std::vector<std::string> fields = {std::move(key)};
    if (!second_name(by).empty()) fields.emplace_back(second);
    add_csv_values(group, report, texts, fields);
    fields.emplace_back(kind);
    add_csv_record(fields, out);
  };
  for (const Row& row : report.rows) {
    const bool has_key = row.key.kind != GroupKey::Kind::kNone;
    add(key_text(row.key, by, texts), second_text(row.key, by, texts), has_key ? "value" : "none", *row.group);
  }
  if (report.rest.count != 0) add("", "", "rest", report.rest);
}

}  // namespace qzlog_tool
