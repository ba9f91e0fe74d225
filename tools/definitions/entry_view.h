#ifndef QZLOG_TOOLS_DEFINITIONS_ENTRY_VIEW_H
#define QZLOG_TOOLS_DEFINITIONS_ENTRY_VIEW_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/message/reference_formats.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_tool {

/// A standard file and, where there is one, the auxiliary file over it, as the library sees them together.
class DefinitionPair {
 public:
  /// The models have to outlive this object; `auxiliary` may be null.
  DefinitionPair(const qzlog_compiler::DefinitionModel& standard, const qzlog_compiler::DefinitionModel* auxiliary);

  /// The IDs of both, in the order of the files, each once.
  std::vector<std::uint32_t> entry_ids() const;
  /// Null for an unknown name. Compiled files without a names section know none.
  const qzlog_compiler::EntryDefinition* find_by_name(std::string_view name) const;

  const qzlog_compiler::EntryDefinition* find_standard(std::uint32_t id) const { return standard_.find_entry(id); }
  const qzlog_compiler::EntryDefinition* find_auxiliary(std::uint32_t id) const;
  const qzlog_compiler::AttributeDefinition* find_global(std::string_view name) const;
  const std::string& version_of(std::uint32_t id) const;

  /// The entry as the library has it with both files loaded; none when neither has it.
  std::optional<qzlog_compiler::EntryDefinition> find_entry(std::uint32_t id) const;

 private:
  qzlog_compiler::ModelIndex standard_;
  std::optional<qzlog_compiler::ModelIndex> auxiliary_;
};

/// The types of the attributes that messages of an entry can refer to. Both have to outlive the result.
qzlog_compiler::AttributeLookup attributes_of(const qzlog_compiler::EntryDefinition& entry,
                                              const DefinitionPair& definitions);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_ENTRY_VIEW_H
