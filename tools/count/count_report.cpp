#include "tools/count/count_report.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <utility>

#include "tools/report/json_stream.h"
#include "tools/report/text_table.h"

#include "tools/report/finding_json.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::JsonLayout;
using qzlog_compiler::JsonListStream;
using qzlog_compiler::JsonObjectStream;
using qzlog_compiler::kResultLayout;
using qzlog_compiler::kResultListLayout;
using qzlog_compiler::TextRow;

constexpr const char* kTotal = "total";
constexpr const char* kNoName = "-";

constexpr JsonLayout kItemLayout = {", ", "", "", " "};

/// The rows of the table, each made when it is asked for: first, for each day, its counts and its total.
class CountRows {
 public:
  CountRows(const CountReport& report, const KeyNames* names) : report_(report), names_(names) {
    std::size_t rows = 0;
    for (std::size_t index = 0; index < report.counts.size(); ++index) {
      ++rows;
      const bool ends_day =
          index + 1 == report.counts.size() || report.counts[index + 1].day != report.counts[index].day;
      if (ends_day) day_ends_.push_back(++rows);
    }
  }

  std::size_t size() const { return days_size() + report_.keys.size() + 1; }

  TextRow row(std::size_t index) const {
    if (index < days_size()) return day_row(index);
    index -= days_size();
    if (index == report_.keys.size()) return make(kTotal, "", "", report_.total);
    const auto& [key, count] = report_.keys[index];
    return make(kTotal, std::to_string(key), name_of(key), count);
  }

 private:
  std::size_t days_size() const { return day_ends_.empty() ? 0 : day_ends_.back(); }

  TextRow day_row(std::size_t index) const {
    const auto end = std::upper_bound(day_ends_.begin(), day_ends_.end(), index);
    const auto day = static_cast<std::size_t>(end - day_ends_.begin());
    if (index + 1 == *end) return make(day_text(report_.days[day].day), kTotal, "", report_.days[day].count);
    const DayCount& count = report_.counts[index - day];  // each day before has its total
    return make(day_text(count.day), std::to_string(count.key), name_of(count.key), count.count);
  }

  std::string name_of(std::int32_t key) const {
    if (names_ == nullptr) return "";
    const auto found = names_->find(key);
    return found != names_->end() ? found->second : kNoName;
  }

  TextRow make(std::string day, std::string key, std::string name, std::uint64_t count) const {
    TextRow row = {std::move(day), std::move(key)};
    if (names_ != nullptr) row.push_back(std::move(name));
    row.push_back(std::to_string(count));
    return row;
  }

  const CountReport& report_;
  const KeyNames* names_;
  std::vector<std::size_t> day_ends_;  // for each day, the row behind its last one
};

void add_key(JsonObjectStream& json, std::int32_t key, const KeyNames* names) {
  json.signed_number("key", key);
  if (names == nullptr) return;
  const auto found = names->find(key);
  found != names->end() ? json.text("name", found->second) : json.null("name");
}

/// Adds a list with an object for each element of `range`, whose members `add_members` adds.
template <class Range, class AddMembers>
void add_list(JsonObjectStream& json, const char* name, const Range& range, AddMembers add_members) {
  JsonListStream list(json.member(name), kResultListLayout);
  for (const auto& element : range) {
    JsonObjectStream item(list.item(), kItemLayout);
    add_members(item, element);
    item.end();
  }
  list.end();
}

}  // namespace

CountReport make_count_report(std::span<const DayCount> counts) {
  CountReport report;
  report.counts = counts;
  std::map<std::int32_t, std::uint64_t> keys;
  for (const DayCount& count : counts) {
    if (report.days.empty() || report.days.back().day != count.day) report.days.push_back({count.day, 0});
    report.days.back().count += count.count;
    keys[count.key] += count.count;
    report.total += count.count;
  }
  report.keys.assign(keys.begin(), keys.end());
  return report;
}

void write_count_table(const CountReport& report, const KeyNames* names, std::ostream& out) {
  const CountRows rows(report, names);
  const TextRow titles = names != nullptr ? TextRow{"day", ">key", "name", ">count"} : TextRow{"day", ">key", ">count"};
  const auto row = [&rows](std::size_t index) { return rows.row(index); };
  qzlog_compiler::write_text_table({titles, rows.size(), row, qzlog_compiler::kAnyWidth}, 0, 0, out);
}

void write_count_json(const CountReport& report, const KeyNames* names, const CountDamage& damage, std::ostream& out) {
  JsonObjectStream json(out, kResultLayout);
  add_json_beginning(damage.findings, json);
  add_list(json, "counts", report.counts, [names](JsonObjectStream& item, const DayCount& count) {
    item.text("day", day_text(count.day));
    add_key(item, count.key, names);
    item.number("count", count.count);
  });
  add_list(json, "days", report.days, [](JsonObjectStream& item, const DayTotal& total) {
    item.text("day", day_text(total.day));
    item.number("count", total.count);
  });
  add_list(json, "keys", report.keys, [names](JsonObjectStream& item, const auto& total) {
    add_key(item, total.first, names);
    item.number("count", total.second);
  });
  json.number("total", report.total);
  json.number("damaged", damage.records);
  json.end();
  out << '\n';
}

}  // namespace qzlog_tool
