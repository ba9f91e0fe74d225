#include "tools/report/passed_over.h"

#include <algorithm>
#include <cstddef>

#include "tools/compiler/text/utf8_text.h"
#include "tools/report/command_message.h"
#include "tools/system/quiet.h"

namespace qzlog_tool {

namespace {

constexpr std::size_t kMostReasons = 5;

std::string with_number(std::uint64_t count, std::string_view one) {
  std::string text = std::to_string(count) + ' ';
  return text.append(one).append(count == 1 ? "" : "s");
}

}  // namespace

void PassedOver::add(std::string_view unit, std::string_view why, std::string_view file,
                     qzlog_compiler::TextPlace place) {
  add_several(unit, why, file, 1, place);
}

// Who reads a file for two ends finds the same twice.
void PassedOver::add_at(std::string_view unit, std::string_view why, std::string_view file, std::uint64_t offset) {
  const std::string place = qzlog_compiler::printable(file) + ", offset " + std::to_string(offset);
  if (place == latest_offset_) return;
  latest_offset_ = place;
  count(unit, why, place, 1);
}

void PassedOver::add_several(std::string_view unit, std::string_view why, std::string_view file, std::uint64_t several,
                             qzlog_compiler::TextPlace place) {
  if (several == 0) return;
  std::string first = units_.empty() ? qzlog_compiler::printable(file) : "";
  if (units_.empty() && place.known()) first.append(":").append(std::to_string(place.line));
  count(unit, why, first, several);
}

void PassedOver::count(std::string_view unit, std::string_view why, std::string_view first, std::uint64_t count) {
  if (units_.empty()) first_ = first;
  const auto add_to = [count](Counts& counts, std::string_view name) {
    const auto at = std::find_if(counts.begin(), counts.end(), [&](const auto& each) { return each.first == name; });
    if (at != counts.end()) {
      at->second += count;
    } else {
      counts.emplace_back(name, count);
    }
  };
  add_to(units_, unit);
  add_to(reasons_, why);
}

std::string PassedOver::text() const {
  std::string text;
  for (const auto& [unit, count] : units_) {
    if (!text.empty()) text += &unit == &units_.back().first ? " and " : ", ";
    text += with_number(count, unit);
  }
  if (text.empty()) return text;
  text += " passed over (";
  append_reasons(text);
  return text.append("); the first at ").append(first_);
}

// Input with something wrong of every kind would fill the screen.
void PassedOver::append_reasons(std::string& text) const {
  Counts reasons = reasons_;
  std::stable_sort(reasons.begin(), reasons.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
  const std::size_t shown = reasons.size() <= kMostReasons ? reasons.size() : kMostReasons - 1;
  std::uint64_t others = 0;
  for (std::size_t i = 0; i < reasons.size(); ++i) {
    if (i >= shown) {
      others += reasons[i].second;
      continue;
    }
    if (i != 0) text += ", ";
    text.append(std::to_string(reasons[i].second)).append(" ").append(reasons[i].first);
  }
  if (others != 0) text.append(" and ").append(with_number(others, "other"));
}

void PassedOver::clear() { *this = PassedOver(); }

PassedOver& passed_over() {
  static PassedOver of_process;
  return of_process;
}

void tell_passed_over() {
  if (passed_over().is_empty() || is_quiet()) return;
  print_command_message(qzlog_compiler::Severity::kError, passed_over().text());
}

}  // namespace qzlog_tool
