#ifndef QZLOG_TOOLS_DIFF_MODEL_DIFF_H
#define QZLOG_TOOLS_DIFF_MODEL_DIFF_H

#include <optional>
#include <string>
#include <vector>

#include "tools/compiler/model/definition_model.h"
#include "tools/diff/diff_rules.h"

namespace qzlog_compiler {

/// What a change is about, in the old and in the new model; null where it is not there. An attribute without an entry
/// is a global one. Without any of them a change is about the whole file.
struct DiffPlace {
  const EntryDefinition* old_entry = nullptr;
  const EntryDefinition* new_entry = nullptr;
  const AttributeDefinition* old_attribute = nullptr;
  const AttributeDefinition* new_attribute = nullptr;
  const SelectorMessage* old_message = nullptr;
  const SelectorMessage* new_message = nullptr;

  /// Those of the new model where it has them.
  const EntryDefinition* entry() const { return new_entry != nullptr ? new_entry : old_entry; }
  const AttributeDefinition* attribute() const { return new_attribute != nullptr ? new_attribute : old_attribute; }
  const SelectorMessage* message() const { return new_message != nullptr ? new_message : old_message; }
};

struct DiffChange {
  DiffRule rule;
  DiffPlace place;
  std::optional<std::string> before;  ///< none: what `after` says was added
  std::optional<std::string> after;   ///< none: what `before` says was removed
};

/// Every change of the globals and the entries, those of the globals first, then by entry ID; both models have to
/// outlive the result. Names, summaries and notation are compared where both models come from sources. The order of
/// entries and of selector messages means nothing. The version is judged apart (version_advice.h).
std::vector<DiffChange> compare_models(const DefinitionModel& old_model, const DefinitionModel& new_model);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_DIFF_MODEL_DIFF_H
