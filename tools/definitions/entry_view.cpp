#include "tools/definitions/entry_view.h"

#include <vector>

#include "tools/compiler/model/model_merge.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::EntryDefinition;

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
  if (auxiliary != nullptr) return qzlog_compiler::merge_entry(standard, *auxiliary);
  return standard != nullptr ? std::optional(*standard) : std::nullopt;
}

qzlog_compiler::AttributeLookup attributes_of(const EntryDefinition& entry, const DefinitionPair& definitions) {
  return [&entry, &definitions](std::string_view name) -> std::optional<qz_AttributeType> {
    const AttributeDefinition* attribute = qzlog_compiler::find_attribute(entry.attributes, name);
    if (attribute == nullptr) attribute = definitions.find_global(name);
    return attribute != nullptr ? std::optional(attribute->type) : std::nullopt;
  };
}

}  // namespace qzlog_tool
