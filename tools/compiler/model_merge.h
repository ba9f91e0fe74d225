#ifndef QZLOG_TOOLS_COMPILER_MODEL_MERGE_H
#define QZLOG_TOOLS_COMPILER_MODEL_MERGE_H

#include "tools/compiler/definition_model.h"

namespace qzlog_compiler {

/// Makes of a standard entry what the library makes of it when it reads the auxiliary record of its ID.
void extend_entry(EntryDefinition& entry, const EntryDefinition& aux);

/// One model with the definitions that the library holds after loading a standard file and an auxiliary one over it.
/// The version is the standard one's. `aux` has to pass `check_aux_merge` without an error. Places in sources are kept
/// for what stands in the standard source only, so that a line never means another file.
DefinitionModel merge_models(DefinitionModel standard, const DefinitionModel& aux);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MODEL_MERGE_H
