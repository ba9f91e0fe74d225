#include "tools/compiler/source/attribute_list.h"

#include <array>
#include <string>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/sensitivity.h"
#include "tools/compiler/source/mapping_fields.h"
#include "tools/compiler/source/scalar_values.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

constexpr std::array<KnownKey, 4> kAttributeFields = {{{"name", true}, {"type", true}, {"redirect"}, {"sensitive"}}};

struct ListKindTraits {
  std::string_view what;
  std::string_view plural;
  Rule duplicate;
  Rule too_many;
};

ListKindTraits traits_of(AttributeListKind kind) {
  if (kind == AttributeListKind::kOwn) {
    return {"an attribute", "attributes", Rule::kDuplicateAttribute, Rule::kTooManyAttributes};
  }
  return {"a global attribute", "global attributes", Rule::kDuplicateGlobal, Rule::kTooManyGlobals};
}

std::string unknown_type_hint(std::string_view name) {
  std::vector<std::string_view> names;
  for (const qz_AttributeTypeName* row = AttributeTypeList; row->name != nullptr; ++row) {
    names.push_back(short_type_name(row->code));
  }
  return did_you_mean(name, names, "types are " + all_type_names());
}

class AttributeListLoader {
 public:
  AttributeListLoader(AttributeListKind kind, AttributeNames& names, Findings& diagnostics)
      : traits_(traits_of(kind)), names_(names), diagnostics_(diagnostics) {}

  std::vector<AttributeDefinition> load(const YamlNode& list) {
    if (list.kind() != YamlKind::kSequence) {
      report_wrong_type(list, "a list of " + std::string(traits_.plural), diagnostics_);
      names_.set_incomplete();
      return {};
    }
    list.for_each_item([this](const YamlNode& item) { load_item(item); });
    if (attributes_.size() > kMaximumCount) {
      diagnostics_.error(attributes_[kMaximumCount].position, traits_.too_many,
                         std::to_string(attributes_.size()) + " " + std::string(traits_.plural) + " are too many; " +
                             std::to_string(kMaximumCount) + " are allowed");
    }
    return std::move(attributes_);
  }

 private:
  void load_item(const YamlNode& item) {
    const MappingFields fields(item, kAttributeFields, traits_.what, diagnostics_);
    const YamlNode* const name_node = fields.find("name");
    std::optional<std::string> name;
    if (name_node != nullptr) name = read_attribute_name(*name_node, diagnostics_);
    const qz_AttributeType type = load_type(fields.find("type"), name_node);
    std::string redirect = load_redirect(fields.find("redirect"));
    const qzlog::Sensitivity sensitivity = load_sensitivity(fields.find("sensitive"), type);
    if (!name) {
      names_.set_incomplete();
      return;
    }
    const SourcePosition first = names_.add(name_node->text(), type, name_node->position());
    if (first.known()) {
      diagnostics_
          .error(name_node->position(), traits_.duplicate,
                 quoted(*name) + " is the name of another of these " + std::string(traits_.plural))
          .with_note(first, "the first is here");
      return;
    }
    attributes_.push_back({std::move(*name), type, std::move(redirect), name_node->position(), sensitivity});
  }

  qz_AttributeType load_type(const YamlNode* node, const YamlNode* name_node) {
    if (node == nullptr) return TypeUnknown;
    const std::optional<std::string> name = read_text(*node, "the attribute's type", diagnostics_);
    if (!name) return TypeUnknown;
    const std::optional<qz_AttributeType> type = find_attribute_type(*name);
    if (type) return *type;
    const std::string of = name_node == nullptr ? "" : " for attribute " + quoted(name_node->text());
    diagnostics_.error(node->position(), Rule::kUnknownType, "unknown type " + quoted(*name) + of)
        .with_hint(unknown_type_hint(*name));
    return TypeUnknown;
  }

  std::string load_redirect(const YamlNode* node) {
    if (node == nullptr) return "";
    return read_text(*node, "the attribute's redirection name", diagnostics_).value_or("");
  }

  qzlog::Sensitivity load_sensitivity(const YamlNode* node, qz_AttributeType type) {
    const std::optional<std::string> name =
        node == nullptr ? std::nullopt : read_text(*node, "the attribute's sensitivity", diagnostics_);
    if (!name) return qzlog::Sensitivity::kKeep;
    const std::optional<qzlog::Sensitivity> sensitivity = find_sensitivity(*name);
    if (!sensitivity) {
      diagnostics_.error(node->position(), Rule::kBadSensitivity, "unknown sensitivity " + quoted(*name))
          .with_hint(did_you_mean(*name, all_sensitivity_names(), "it is one of keep, hash and drop"));
    } else if (sensitivity == qzlog::Sensitivity::kHash && type != TypeUnknown && !can_be_hashed(type)) {
      diagnostics_
          .error(node->position(), Rule::kHashedType,
                 std::string(short_type_name(type)) + " cannot be hashed: a hash takes the place of a text")
          .with_hint("leave the value out with drop");
    }
    return sensitivity.value_or(qzlog::Sensitivity::kKeep);
  }

  ListKindTraits traits_;
  AttributeNames& names_;
  Findings& diagnostics_;
  std::vector<AttributeDefinition> attributes_;
};

}  // namespace

std::optional<qz_AttributeType> AttributeNames::find(std::string_view name) const {
  const auto found = rows_.find(name);
  if (found != rows_.end()) return found->second.type;
  return complete_ ? std::nullopt : std::optional(TypeUnknown);
}

SourcePosition AttributeNames::add(std::string_view name, qz_AttributeType type, SourcePosition position) {
  const auto [place, added] = rows_.try_emplace(name, Row{type, position});
  return added ? SourcePosition{} : place->second.position;
}

void AttributeNames::append_to(std::vector<std::string_view>& candidates) const {
  for (const auto& [name, row] : rows_) candidates.push_back(name);
}

std::vector<AttributeDefinition> load_attribute_list(const YamlNode& list, AttributeListKind kind,
                                                     AttributeNames& names, Findings& diagnostics) {
  return AttributeListLoader(kind, names, diagnostics).load(list);
}

}  // namespace qzlog_compiler
