#include "tools/compiler/source/scalar_values.h"

#include <algorithm>
#include <limits>

#include "tools/compiler/source/mapping_fields.h"
#include "tools/compiler/text/number_text.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kMaximumVersionSize = 8;

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_capital(char c) { return c >= 'A' && c <= 'Z'; }

/// The library reads 05 as 5, so that two versions which look different would be the same.
bool is_version_number(std::string_view digits) {
  const bool leading_zero = digits.size() > 1 && digits.front() == '0';
  return !digits.empty() && !leading_zero && std::all_of(digits.begin(), digits.end(), is_digit);
}

}  // namespace

bool is_version(std::string_view text) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos || text.size() > kMaximumVersionSize) return false;
  return is_version_number(text.substr(0, point)) && is_version_number(text.substr(point + 1));
}

bool is_entry_name(std::string_view text) {
  return !text.empty() && is_capital(text.front()) &&
         std::all_of(text.begin(), text.end(), [](char c) { return is_capital(c) || is_digit(c) || c == '_'; });
}

std::optional<std::string> read_text(const YamlNode& node, std::string_view what, Findings& diagnostics) {
  if (kind_name(node) != "a text") {
    report_wrong_type(node, what, diagnostics);
    return std::nullopt;
  }
  if (node.text().find('\0') != std::string_view::npos) {
    diagnostics.error(node.position(), Rule::kNulCharacter, std::string(what) + " holds a NUL character")
        .with_hint("a NUL would end the text in the compiled file; leave it out");
    return std::nullopt;
  }
  return std::string(node.text());
}

std::optional<std::uint32_t> read_number(const YamlNode& node, std::string_view what, Findings& diagnostics) {
  if (kind_name(node) != "a text" || node.style() != ScalarStyle::kPlain) {
    report_wrong_type(node, std::string(what) + ", a number without quotes", diagnostics);
    return std::nullopt;
  }
  const std::optional<std::uint64_t> number = parse_unsigned(node.text(), NumberForm::kEither);
  if (!number) {
    diagnostics.error(node.position(), Rule::kBadNumber, quoted(node.text()) + " is no number")
        .with_hint(std::string(what) + " is decimal or 0x hexadecimal, from 0 to 4294967295");
    return std::nullopt;
  }
  if (*number > std::numeric_limits<std::uint32_t>::max()) {
    diagnostics.error(node.position(), Rule::kNumberOutOfRange, quoted(node.text()) + " is too large")
        .with_hint(std::string(what) + " is at most 4294967295");
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(*number);
}

namespace {

bool is_attribute_name(std::string_view text) {
  return !text.empty() && text.find_first_of("%{}:") == std::string_view::npos;
}

/// Texts that only some are good for, and what is said of the others.
struct TextRule {
  std::string_view what;
  bool (*is_good)(std::string_view);
  Rule rule;
  std::string_view complaint;
  std::string_view hint;
};

std::optional<std::string> read_good_text(const YamlNode& node, const TextRule& rule, Findings& diagnostics) {
  std::optional<std::string> text = read_text(node, rule.what, diagnostics);
  if (!text || rule.is_good(*text)) return text;
  diagnostics.error(node.position(), rule.rule, std::string(rule.complaint) + " " + quoted(*text))
      .with_hint(std::string(rule.hint));
  return std::nullopt;
}

}  // namespace

std::optional<std::string> read_version(const YamlNode& node, Findings& diagnostics) {
  return read_good_text(node,
                        {"the version", is_version, Rule::kBadVersion, "bad version",
                         "a version is MAJOR.MINOR in digits without leading zeros, at most 8 bytes, as in \"2.5\""},
                        diagnostics);
}

std::optional<std::string> read_entry_name(const YamlNode& node, Findings& diagnostics) {
  return read_good_text(node,
                        {"the entry's name", is_entry_name, Rule::kBadEntryName, "bad entry name",
                         "a name begins with A-Z and goes on with A-Z, 0-9 and _"},
                        diagnostics);
}

std::optional<std::string> read_attribute_name(const YamlNode& node, Findings& diagnostics) {
  return read_good_text(node,
                        {"the attribute's name", is_attribute_name, Rule::kBadAttributeName, "bad attribute name",
                         "messages could not refer to a name that is empty or holds one of % { } :"},
                        diagnostics);
}

}  // namespace qzlog_compiler
