#include "tools/compiler/attribute_list.h"

#include <array>
#include <string>

#include "tools/compiler/attribute_type.h"
#include "tools/compiler/mapping_fields.h"
#include "tools/compiler/scalar_values.h"
#include "tools/compiler/utf8_text.h"

namespace qzlog_compiler {
namespace {

constexpr std::array<KnownKey, 3> kAttributeFields = {{{"name", true}, {"type", true}, {"redirect"}}};

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

class AttributeListLoader {
 public:
  AttributeListLoader(AttributeListKind kind, AttributeNames& names, Diagnostics& diagnostics)
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
    if (!name) {
      names_.set_incomplete();
      return;
    }
    const std::uint32_t first_line = names_.add(name_node->text(), type, name_node->position().line);
    if (first_line != 0) {
      diagnostics_.error(name_node->position(), traits_.duplicate,
                         quoted(*name) + " is the name of another of these " + std::string(traits_.plural) +
                             ", in line " + std::to_string(first_line));
      return;
    }
    attributes_.push_back({std::move(*name), type, std::move(redirect), name_node->position()});
  }

  qz_AttributeType load_type(const YamlNode* node, const YamlNode* name_node) {
    if (node == nullptr) return TypeUnknown;
    const std::optional<std::string> name = read_text(*node, "the attribute's type", diagnostics_);
    if (!name) return TypeUnknown;
    const std::optional<qz_AttributeType> type = find_attribute_type(*name);
    if (type) return *type;
    const std::string of = name_node == nullptr ? "" : " for attribute " + quoted(name_node->text());
    diagnostics_.error(node->position(), Rule::kUnknownType,
                       "unknown type " + quoted(*name) + of + "; types are " + all_type_names());
    return TypeUnknown;
  }

  std::string load_redirect(const YamlNode* node) {
    if (node == nullptr) return "";
    return read_text(*node, "the attribute's redirection name", diagnostics_).value_or("");
  }

  ListKindTraits traits_;
  AttributeNames& names_;
  Diagnostics& diagnostics_;
  std::vector<AttributeDefinition> attributes_;
};

}  // namespace

std::optional<qz_AttributeType> AttributeNames::find(std::string_view name) const {
  const auto found = rows_.find(name);
  if (found != rows_.end()) return found->second.type;
  return complete_ ? std::nullopt : std::optional(TypeUnknown);
}

std::uint32_t AttributeNames::add(std::string_view name, qz_AttributeType type, std::uint32_t line) {
  const auto [place, added] = rows_.try_emplace(name, Row{type, line});
  return added ? 0 : place->second.line;
}

std::vector<AttributeDefinition> load_attribute_list(const YamlNode& list, AttributeListKind kind,
                                                     AttributeNames& names, Diagnostics& diagnostics) {
  return AttributeListLoader(kind, names, diagnostics).load(list);
}

}  // namespace qzlog_compiler
