#include "tools/compiler/model/definition_model.h"

#include <algorithm>

namespace qzlog_compiler {
namespace {

template <typename Map, typename Key>
auto find_or_null(const Map& map, const Key& key) -> typename Map::mapped_type {
  const auto found = map.find(key);
  return found == map.end() ? nullptr : found->second;
}

}  // namespace

const AttributeDefinition* find_attribute(const std::vector<AttributeDefinition>& attributes, std::string_view name) {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [name](const AttributeDefinition& attribute) { return attribute.name == name; });
  return found == attributes.end() ? nullptr : &*found;
}

const AttributeDefinition* selector_attribute(const EntryDefinition& entry) {
  return entry.selector.attribute.empty() ? nullptr : find_attribute(entry.attributes, entry.selector.attribute);
}

ModelIndex::ModelIndex(const DefinitionModel& model) : model_(&model) {
  entries_.reserve(model.entries.size());
  for (const EntryDefinition& entry : model.entries) {
    entries_.emplace(entry.id, &entry);
    if (!entry.name.empty()) names_.emplace(entry.name, &entry);
  }
  // Of two global attributes of one name the later one holds.
  for (const AttributeDefinition& global : model.globals) globals_[global.name] = &global;
}

const EntryDefinition* ModelIndex::find_entry(std::uint32_t id) const { return find_or_null(entries_, id); }

const EntryDefinition* ModelIndex::find_entry_by_name(std::string_view name) const {
  return find_or_null(names_, name);
}

const AttributeDefinition* ModelIndex::find_global(std::string_view name) const { return find_or_null(globals_, name); }

}  // namespace qzlog_compiler
