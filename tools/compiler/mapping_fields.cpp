#include "tools/compiler/mapping_fields.h"

#include <cassert>

#include "tools/compiler/utf8_text.h"

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

}  // namespace

MappingFields::MappingFields(const YamlNode& node, std::span<const KnownKey> keys, std::string_view what,
                             Diagnostics& diagnostics)
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
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (keys_[i].key == key) return values_[i] ? &*values_[i] : nullptr;
  }
  return nullptr;
}

std::optional<YamlNode>* MappingFields::slot(std::string_view key) {
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (keys_[i].key == key) return &values_[i];
  }
  return nullptr;
}

void MappingFields::take(const YamlNode& key, const YamlNode& value, std::string_view what, Diagnostics& diagnostics) {
  if (key.kind() != YamlKind::kScalar) {
    report_wrong_type(key, "a key", diagnostics);
    return;
  }
  std::optional<YamlNode>* const place = slot(key.text());
  if (place == nullptr) {
    diagnostics.error(
        key.position(), Rule::kUnknownKey,
        "unknown key " + quoted(key.text()) + " in " + std::string(what) + "; allowed are " + key_list(keys_));
    return;
  }
  if (place->has_value()) {
    diagnostics.error(key.position(), Rule::kDuplicateKey,
                      "the key " + quoted(key.text()) + " stands in " + std::string(what) +
                          " twice; its first value is in line " + std::to_string((*place)->position().line));
    return;
  }
  *place = value;
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

void report_wrong_type(const YamlNode& node, std::string_view expected, Diagnostics& diagnostics) {
  diagnostics.error(node.position(), Rule::kWrongType,
                    "expected " + std::string(expected) + ", found " + std::string(kind_name(node)));
}

}  // namespace qzlog_compiler
