#include "tools/diff/diff_report.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string_view>

#include "tools/compiler/text/utf8_text.h"
#include "tools/report/finding_json.h"
#include "tools/system/terminal.h"
#include "tools/system/terminal_text.h"

namespace qzlog_tool {
namespace {

using nlohmann::ordered_json;
using qzlog_compiler::Collision;
using qzlog_compiler::diff_rule_info;
using qzlog_compiler::DiffChange;
using qzlog_compiler::DiffPlace;
using qzlog_compiler::DiffRule;
using qzlog_compiler::DiffRuleInfo;
using qzlog_compiler::kSafe;
using qzlog_compiler::VersionAdvice;
using qzlog_compiler::VersionStep;

enum class Weight { kBreak, kAccepted, kSafe };

Weight weight_of(const ReportedChange& change) {
  if (diff_rule_info(change.change.rule).verdicts == kSafe) return Weight::kSafe;
  return change.accepted != nullptr ? Weight::kAccepted : Weight::kBreak;
}

std::size_t count(const DiffReport& report, Weight weight) {
  return static_cast<std::size_t>(
      std::count_if(report.changes.begin(), report.changes.end(),
                    [weight](const ReportedChange& change) { return weight_of(change) == weight; }));
}

std::string joined(const std::vector<std::string_view>& words) {
  std::string text;
  for (const std::string_view word : words) text.append(text.empty() ? "" : ", ").append(word);
  return text;
}

/// Words stand as they are, everything else in quotes, so that blanks at the ends can be seen.
std::string shown(const std::string& value) {
  const bool is_word = !value.empty() && std::all_of(value.begin(), value.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.';
  });
  return is_word ? value : '"' + qzlog_compiler::printable(value) + '"';
}

std::string group_of(const DiffChange& change) {
  const DiffPlace& place = change.place;
  if (const auto* const entry = place.entry()) {
    const auto* const named = entry->name.empty() && place.old_entry != nullptr ? place.old_entry : entry;
    return "entry " + std::to_string(entry->id) + (named->name.empty() ? "" : ' ' + named->name);
  }
  const bool is_global = place.attribute() != nullptr || change.rule == DiffRule::kGlobalOrderChanged;
  return is_global ? "globals" : "file";
}

std::string subject_of(const DiffChange& change) {
  std::string text;
  const DiffPlace& place = change.place;
  if (const auto* const message = place.message()) {
    text = "selector message " + std::to_string(message->index) + " for " + std::to_string(message->value);
  }
  if (const auto* const attribute = place.attribute()) {
    text = (place.entry() != nullptr ? "attribute " : "global ") + qzlog_compiler::quoted(attribute->name);
  }
  const std::string_view subject = diff_rule_info(change.rule).subject;
  if (!text.empty() && !subject.empty()) text += ' ';
  return text.append(subject);
}

std::string description(const DiffChange& change) {
  const std::string subject = subject_of(change);
  if (change.rule == DiffRule::kAuxCollision) return subject + ": " + change.after.value_or("");
  if (!change.before) return subject + " added: " + shown(change.after.value_or(""));
  if (!change.after) return subject + " removed: " + shown(*change.before);
  if (change.before == change.after) return subject + ": " + shown(*change.before) + " stays";
  return subject + ": " + shown(*change.before) + " -> " + shown(*change.after);
}

void print_styled(std::ostream& out, std::string_view word, TextStyle style, bool colour) {
  write_as_it_is(out, colour ? coloured(word, style) : std::string(word));
}

void print_change(std::ostream& out, const ReportedChange& reported, bool knows_aux, bool colour) {
  const DiffRuleInfo& info = diff_rule_info(reported.change.rule);
  const std::string verdicts = joined(qzlog_compiler::verdict_names(info.verdicts));
  out << "  ";
  switch (weight_of(reported)) {
    case Weight::kBreak:
      print_styled(out, "breaks", TextStyle::kError, colour);
      out << ' ' << verdicts;
      break;
    case Weight::kAccepted:
      print_styled(out, "accepted", TextStyle::kWarning, colour);
      out << " (" << verdicts << ')';
      break;
    case Weight::kSafe:
      out << "safe" << (info.collision == Collision::kMay && !knows_aux ? " unless an auxiliary file collides" : "");
      break;
  }
  out << ": " << description(reported.change) << " [" << info.name << "]\n";
  if (reported.accepted != nullptr) out << "    " << qzlog_compiler::printable(reported.accepted->reason) << '\n';
}

void print_count(std::ostream& out, std::size_t number, std::string_view one, std::string_view many) {
  out << number << ' ' << (number == 1 ? one : many);
}

void print_advice(std::ostream& out, const DiffReport& report) {
  const VersionAdvice& advice = report.advice;
  const std::string version = shown(report.new_version);
  if (advice.needed == VersionStep::kNone) {
    out << "The version need not move; it is " << version << ".\n";
  } else if (advice.advised.empty()) {
    out << "The version has to move; it is " << version << ".\n";
  } else {
    out << "The version has to become " << advice.advised << " or later; it is " << version << ".\n";
  }
}

ordered_json text_or_null(const std::optional<std::string>& text) {
  return text ? ordered_json(*text) : ordered_json(nullptr);
}

void add_place(ordered_json& json, const DiffPlace& place) {
  if (const auto* const entry = place.entry()) {
    json["entry"] = entry->id;
    if (!entry->name.empty()) json["name"] = entry->name;
  }
  if (const auto* const attribute = place.attribute()) {
    json[place.entry() != nullptr ? "attribute" : "global"] = attribute->name;
  }
  if (const auto* const message = place.message()) json["selector_index"] = message->index;
}

ordered_json to_json(const ReportedChange& reported) {
  const DiffRuleInfo& info = diff_rule_info(reported.change.rule);
  ordered_json json;
  json["rule"] = info.name;
  json["breaks"] = qzlog_compiler::verdict_names(info.verdicts);
  add_place(json, reported.change.place);
  json["before"] = text_or_null(reported.change.before);
  json["after"] = text_or_null(reported.change.after);
  if (info.collision == Collision::kMay) json["may_collide"] = true;
  if (reported.accepted != nullptr) json["accepted"] = reported.accepted->reason;
  return json;
}

ordered_json version_json(const DiffReport& report) {
  ordered_json json;
  json["old"] = report.old_version;
  json["new"] = report.new_version;
  json["needed_step"] = step_name(report.advice.needed);
  json["advised"] = report.advice.advised.empty() ? ordered_json(nullptr) : ordered_json(report.advice.advised);
  json["sufficient"] = report.advice.sufficient();
  return json;
}

}  // namespace

std::size_t DiffReport::break_count() const { return count(*this, Weight::kBreak); }

void print_diff(std::ostream& out, const DiffReport& report, bool colour) {
  if (report.changes.empty()) {
    out << "no change\n";
    return;
  }
  std::string group;
  for (const ReportedChange& reported : report.changes) {
    const std::string next = group_of(reported.change);
    if (next != group) out << next << '\n';
    group = next;
    print_change(out, reported, report.knows_aux, colour);
  }
  print_count(out, report.break_count(), "break, ", "breaks, ");
  print_count(out, count(report, Weight::kAccepted), "accepted, ", "accepted, ");
  print_count(out, count(report, Weight::kSafe), "safe change\n", "safe changes\n");
  print_advice(out, report);
}

ordered_json to_json(const DiffReport& report) {
  ordered_json json = json_result(report.findings);
  json["old"] = report.old_name;
  json["new"] = report.new_name;
  json["version"] = version_json(report);
  json["breaks"] = report.break_count();
  json["accepted"] = count(report, Weight::kAccepted);
  json["safe"] = count(report, Weight::kSafe);
  json["changes"] = ordered_json::array();
  for (const ReportedChange& reported : report.changes) json["changes"].push_back(to_json(reported));
  return json;
}

}  // namespace qzlog_tool
