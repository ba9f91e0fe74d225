#include "tools/explain/rule_explanation.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>
#include <set>

#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/explain/rule_examples.h"
#include "tools/report/finding_json.h"
#include "tools/report/text_table.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

using nlohmann::ordered_json;
using qzlog_compiler::KnownRule;
using qzlog_compiler::Severity;

std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines;
  for (;;) {
    const std::size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return lines;
    text.remove_prefix(end + 1);
  }
}

void print_indented(std::ostream& out, std::string_view text) {
  for (const std::string& line : lines_of(text)) out << "  " << line << '\n';
}

std::vector<std::string> former_names(const KnownRule& rule) {
  std::vector<std::string> names;
  std::string_view rest = rule.info->former_names;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    names.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return names;
}

std::vector<RuleExample> examples_of(const KnownRule& rule) {
  std::vector<RuleExample> examples;
  for (const RuleExample& example : all_rule_examples()) {
    if (example.table == rule.table && example.rule == rule.info->name) examples.push_back(example);
  }
  return examples;
}

/// Those of the examples, the error first; a change is neither.
std::vector<Severity> severities_of(const KnownRule& rule, const std::vector<RuleExample>& examples) {
  if (!rule.details.empty()) return {};
  std::vector<Severity> severities;
  severities.reserve(examples.size() + 1);
  for (const RuleExample& example : examples) severities.push_back(example.severity);
  if (severities.empty()) severities.push_back(rule.usual_severity);
  return severities;
}

std::string title_of(const KnownRule& rule, const std::vector<Severity>& severities) {
  std::string title = "Of " + std::string(rule.about);
  for (const Severity severity : severities) {
    title += severity == severities.front() ? ": " : " or ";
    title += severity == Severity::kError ? "an error" : "a warning";
  }
  return title;
}

/// "version_step" as people read it.
std::string label(std::string_view name) {
  std::string text(name);
  std::replace(text.begin(), text.end(), '_', ' ');
  return text;
}

void print_details(std::ostream& out, const KnownRule& rule) {
  std::vector<qzlog_compiler::TextRow> rows;
  for (const auto& [name, text] : rule.details) {
    if (!text.empty()) rows.push_back({label(name), text});
  }
  if (rows.empty()) return;
  out << '\n';
  const auto row = [&rows](std::size_t i) { return rows[i]; };
  qzlog_compiler::write_text_table({{"", ""}, rows.size(), row, qzlog_compiler::kAnyWidth}, 2, 0, out);
}

std::string acceptance(const KnownRule& rule) {
  std::string text(rule.accepted);
  const std::string_view place = "RULE";
  if (const std::size_t at = text.find(place); at != std::string::npos) {
    text.replace(at, place.size(), rule.info->name);
  }
  return text;
}

void print_rule(std::ostream& out, const KnownRule& rule) {
  const std::vector<RuleExample> examples = examples_of(rule);
  out << '\n' << title_of(rule, severities_of(rule, examples)) << '\n';
  print_indented(out, rule.info->meaning);
  print_details(out, rule);
  for (const RuleExample& example : examples) {
    out << '\n';
    print_indented(out, example.text);
  }
  if (const std::string accepted = acceptance(rule); !accepted.empty()) {
    out << '\n';
    print_indented(out, accepted);
  }
}

ordered_json rule_json(const KnownRule& rule) {
  const std::vector<RuleExample> examples = examples_of(rule);
  ordered_json item = {{"name", rule.info->name}, {"about", rule.about}, {"meaning", rule.info->meaning}};
  item["severities"] = ordered_json::array();
  for (const Severity severity : severities_of(rule, examples)) {
    item["severities"].push_back(qzlog_compiler::severity_name(severity));
  }
  item["acceptable"] = rule.info->acceptable;
  item["former_names"] = former_names(rule);
  item["examples"] = ordered_json::array();
  for (const RuleExample& example : examples) item["examples"].push_back(example.text);
  for (const auto& [name, text] : rule.details) item["details"][std::string(name)] = text;
  return item;
}

/// The name with those that it had before, all of the rules together.
std::string heading(std::span<const KnownRule> rules) {
  std::string text;
  std::set<std::string_view> told;
  for (const KnownRule& rule : rules) {
    if (!told.insert(rule.info->name).second) continue;
    text.append(text.empty() ? "" : ", ").append(rule.info->name);
    for (const std::string& former : former_names(rule)) text += " (formerly " + former + ")";
  }
  return text;
}

}  // namespace

bool reads_as_rule(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; }) &&
         (text.front() < '0' || text.front() > '9');
}

std::vector<KnownRule> find_known_rules(std::string_view name, std::span<const KnownRule> all) {
  std::vector<KnownRule> found;
  for (const KnownRule& rule : all) {
    if (rule.info->is_named(name)) found.push_back(rule);
  }
  return found;
}

std::vector<std::string_view> rule_names(std::span<const KnownRule> all) {
  std::set<std::string_view> names;
  for (const KnownRule& rule : all) names.insert(rule.info->name);
  return {names.begin(), names.end()};
}

std::vector<KnownRule> require_known_rules(const std::string& name, std::span<const KnownRule> all) {
  std::vector<KnownRule> rules = find_known_rules(name, all);
  if (!rules.empty()) return rules;
  const std::string advice = qzlog_compiler::did_you_mean(name, rule_names(all),
                                                          "a diagnostic names its rule in brackets at its end, and an "
                                                          "entry is explained with its --definitions");
  throw CommandError(kExitFindings, "there is no rule " + qzlog_compiler::quoted(name) + "\n  hint: " + advice);
}

void print_rule_explanation(std::ostream& out, std::span<const KnownRule> rules) {
  out << heading(rules) << '\n';
  for (const KnownRule& rule : rules) print_rule(out, rule);
}

void print_rule_explanation_json(std::ostream& out, std::span<const KnownRule> rules) {
  ordered_json result = json_result({});
  result["rules"] = ordered_json::array();
  for (const KnownRule& rule : rules) result["rules"].push_back(rule_json(rule));
  out << json_result_text(result);
}

}  // namespace qzlog_tool
