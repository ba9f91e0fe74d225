#include "tools/entry_view.h"

#include <vector>

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::EntryDefinition;

/// As the library merges an auxiliary record into the standard definition.
void merge(const EntryDefinition& auxiliary, EntryDefinition& entry) {
  if (entry.name.empty()) entry.name = auxiliary.name;
  if (!auxiliary.summary.empty()) entry.summary = auxiliary.summary;
  if (entry.mask == 0) entry.mask = auxiliary.mask;
  entry.word = auxiliary.word;
  if (!auxiliary.message_id.empty() && !auxiliary.message.stored.empty()) {
    entry.message_id = auxiliary.message_id;
    entry.message = auxiliary.message;
  }
  // Only the selector attribute may be in both; the auxiliary one replaces the other.
  if (qzlog_compiler::selector_attribute(auxiliary) != nullptr) {
    std::erase_if(entry.attributes, [&](const auto& former) { return former.name == auxiliary.selector.attribute; });
  }
  entry.attributes.insert(entry.attributes.end(), auxiliary.attributes.begin(), auxiliary.attributes.end());
  if (entry.selector.attribute.empty()) entry.selector.attribute = auxiliary.selector.attribute;
  const auto& messages = auxiliary.selector.messages;
  entry.selector.messages.insert(entry.selector.messages.end(), messages.begin(), messages.end());
}

}  // namespace

DefinitionPair::DefinitionPair(const DefinitionModel& standard, const DefinitionModel* auxiliary)
    : standard_(standard) {
  if (auxiliary != nullptr) auxiliary_.emplace(*auxiliary);
}

std::vector<std::uint32_t> DefinitionPair::entry_ids() const {
  std::vector<std::uint32_t> ids;
  for (const EntryDefinition& entry : standard_.model().entries) ids.push_back(entry.id);
  if (!auxiliary_) return ids;
  for (const EntryDefinition& entry : auxiliary_->model().entries) {
    if (find_standard(entry.id) == nullptr) ids.push_back(entry.id);
  }
  return ids;
}

const EntryDefinition* DefinitionPair::find_by_name(std::string_view name) const {
  const EntryDefinition* const entry = standard_.find_entry_by_name(name);
  return entry != nullptr || !auxiliary_ ? entry : auxiliary_->find_entry_by_name(name);
}

const EntryDefinition* DefinitionPair::find_auxiliary(std::uint32_t id) const {
  return auxiliary_ ? auxiliary_->find_entry(id) : nullptr;
}

const AttributeDefinition* DefinitionPair::find_global(std::string_view name) const {
  const AttributeDefinition* const global = auxiliary_ ? auxiliary_->find_global(name) : nullptr;
  return global != nullptr ? global : standard_.find_global(name);
}

const std::string& DefinitionPair::version_of(std::uint32_t id) const {
  return find_auxiliary(id) != nullptr ? auxiliary_->model().version : standard_.model().version;
}

std::optional<EntryDefinition> DefinitionPair::find_entry(std::uint32_t id) const {
  const EntryDefinition* const standard = find_standard(id);
  const EntryDefinition* const auxiliary = find_auxiliary(id);
  if (standard == nullptr) return auxiliary != nullptr ? std::optional(*auxiliary) : std::nullopt;
  EntryDefinition entry = *standard;
  if (auxiliary != nullptr) merge(*auxiliary, entry);
  return entry;
}

qzlog_compiler::AttributeLookup attributes_of(const EntryDefinition& entry, const DefinitionPair& definitions) {
  return [&entry, &definitions](std::string_view name) -> std::optional<qz_AttributeType> {
    const AttributeDefinition* attribute = qzlog_compiler::find_attribute(entry.attributes, name);
    if (attribute == nullptr) attribute = definitions.find_global(name);
    return attribute != nullptr ? std::optional(attribute->type) : std::nullopt;
  };
}

}  // namespace qzlog_tool
