#include "tools/compiler/source/mapping_fields.h"

#include <cassert>
#include <vector>

#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

std::string key_list(std::span<const KnownKey> keys) {
  std::string list;
  for (const KnownKey& known : keys) {
    if (!list.empty()) list += ", ";
    list += known.key;
  }
  return list;
}

std::string unknown_key_hint(std::string_view key, std::span<const KnownKey> keys) {
  std::vector<std::string_view> names;
  for (const KnownKey& known : keys) names.push_back(known.key);
  return did_you_mean(key, names, "allowed are " + key_list(keys));
}

}  // namespace

MappingFields::MappingFields(const YamlNode& node, std::span<const KnownKey> keys, std::string_view what,
                             Findings& diagnostics)
    : keys_(keys), is_mapping_(node.kind() == YamlKind::kMapping) {
  assert(keys.size() <= kMaximumFields);
  if (!is_mapping_) {
    report_wrong_type(node, std::string(what) + ", a mapping with the keys " + key_list(keys), diagnostics);
    return;
  }
  node.for_each_pair([&](const YamlNode& key, const YamlNode& value) { take(key, value, what, diagnostics); });
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (!keys_[i].required || values_[i]) continue;
    diagnostics.error(node.position(), Rule::kMissingKey,
                      std::string(what) + " lacks the key '" + std::string(keys_[i].key) + "'");
  }
}

const YamlNode* MappingFields::find(std::string_view key) const {
  const std::optional<std::size_t> index = index_of(key);
  return index && values_[*index] ? &*values_[*index] : nullptr;
}

std::optional<std::size_t> MappingFields::index_of(std::string_view key) const {
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (keys_[i].key == key) return i;
  }
  return std::nullopt;
}

void MappingFields::take(const YamlNode& key, const YamlNode& value, std::string_view what, Findings& diagnostics) {
  if (key.kind() != YamlKind::kScalar) {
    report_wrong_type(key, "a key", diagnostics);
    return;
  }
  const std::optional<std::size_t> index = index_of(key.text());
  if (!index) {
    diagnostics
        .error(key.position(), Rule::kUnknownKey, "unknown key " + quoted(key.text()) + " in " + std::string(what))
        .with_hint(unknown_key_hint(key.text(), keys_));
    return;
  }
  if (values_[*index]) {
    diagnostics
        .error(key.position(), Rule::kDuplicateKey,
               "the key " + quoted(key.text()) + " stands in " + std::string(what) + " twice")
        .with_note(key_positions_[*index], "the first is here");
    return;
  }
  values_[*index] = value;
  key_positions_[*index] = key.position();
}

std::string_view kind_name(const YamlNode& node) {
  switch (node.kind()) {
    case YamlKind::kSequence:
      return "a list";
    case YamlKind::kMapping:
      return "a mapping";
    default:
      break;
  }
  const bool no_value = node.style() == ScalarStyle::kPlain && (node.text().empty() || node.text() == "~");
  return no_value ? "no value" : "a text";
}

void report_wrong_type(const YamlNode& node, std::string_view expected, Findings& diagnostics) {
  diagnostics.error(node.position(), Rule::kWrongType,
                    "expected " + std::string(expected) + ", found " + std::string(kind_name(node)));
}

}  // namespace qzlog_compiler
