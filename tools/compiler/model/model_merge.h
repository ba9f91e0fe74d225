#ifndef QZLOG_TOOLS_COMPILER_MODEL_MODEL_MERGE_H
#define QZLOG_TOOLS_COMPILER_MODEL_MODEL_MERGE_H

#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

/// Whether the message of an auxiliary entry counts: only with a catalog key and a text together. Otherwise the entry
/// keeps the standard message, or has none where only the auxiliary file has the entry.
bool gives_message(const EntryDefinition& aux);

/// What the library holds of an auxiliary entry over the standard entry of its ID, null where there is none.
EntryDefinition merge_entry(const EntryDefinition* standard, const EntryDefinition& aux);

/// One model with the definitions that the library holds after loading a standard file and an auxiliary one over it.
/// The version is the standard one's. `aux` has to pass `check_aux_merge` without an error. Places in sources are kept
/// for what stands in the standard source only, so that a line never means another file.
DefinitionModel merge_models(DefinitionModel standard, const DefinitionModel& aux);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MODEL_MODEL_MERGE_H
