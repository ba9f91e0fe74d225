#include "tools/options/value_kind.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tools/options/locale_names.h"
#include "tools/options/reader_zone.h"

namespace qzlog_tool {

namespace {

using Type = ValueKind::Type;

/// Names of definition sources and compiled files that go without a suffix.
constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kDefinitionNames = {{
    {"SRC", ".yaml"},
    {"STD", ".ldf|.yaml"},
    {"AUX", ".ldf|.yaml"},
    {"OLD", ".ldf|.yaml"},
    {"NEW", ".ldf|.yaml"},
}};

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

bool is_choice(std::string_view text) {
  const auto is_part = [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_'; };
  return !text.empty() && std::all_of(text.begin(), text.end(), is_part);
}

bool is_digit(char character) { return character >= '0' && character <= '9'; }

std::vector<std::string> digits(char first, char last) {
  std::vector<std::string> result;
  for (char digit = first; digit <= last; ++digit) result.emplace_back(1, digit);
  return result;
}

void add_suffixes(const std::string& part, std::vector<std::string>& suffixes) {
  const std::size_t dot = part.rfind('.');
  if (dot != std::string::npos && dot + 1 < part.size()) suffixes.push_back(part.substr(dot));
  for (const auto& [name, of_name] : kDefinitionNames) {
    if (part != name) continue;
    for (std::string& suffix : split(of_name, '|')) suffixes.push_back(std::move(suffix));
  }
}

bool is_any_file(const std::string& part) { return part == "FILE" || part == "PATH" || part == "DIR/NAME"; }

std::vector<std::string> file_suffixes(const std::vector<std::string>& parts) {
  std::vector<std::string> suffixes;
  for (const std::string& part : parts) add_suffixes(part, suffixes);
  return suffixes;
}

}  // namespace

// "SRC.yaml [AUX.yaml ...]" and "FILE.po ..." go on with more of the same.
ValueKind value_kind(std::string_view whole_name) {
  const std::string_view name = whole_name.substr(0, whole_name.find(' '));
  if (name == "ll_CC") return {Type::kChoice, locale_names()};
  if (name == "ZONE") return {Type::kChoice, offered_zones()};
  if (name == "EVENT") return {Type::kEvent, {}};
  if (name == "ID|NAME|RULE") return {Type::kExplained, {}};
  if (name == "EXPRESSION" || name == "ATTRIBUTE") return {Type::kExpression, {}};
  if (name == "DIR") return {Type::kFolder, {}};
  if (name.size() == 3 && is_digit(name[0]) && name[1] == '-' && is_digit(name[2])) {
    return {Type::kChoice, digits(name[0], name[2])};
  }
  if (name.size() > 2 && name.front() == '{' && name.back() == '}') {
    return {Type::kChoice, split(name.substr(1, name.size() - 2), ',')};
  }
  const std::vector<std::string> parts = split(name, '|');
  if (parts.size() > 1 && std::all_of(parts.begin(), parts.end(), is_choice)) return {Type::kChoice, parts};
  if (std::any_of(parts.begin(), parts.end(), is_any_file)) return {Type::kFile, {}};
  std::vector<std::string> suffixes = file_suffixes(parts);
  if (!suffixes.empty()) return {Type::kFile, std::move(suffixes)};
  return {};
}

}  // namespace qzlog_tool
