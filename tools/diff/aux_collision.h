#ifndef QZLOG_TOOLS_DIFF_AUX_COLLISION_H
#define QZLOG_TOOLS_DIFF_AUX_COLLISION_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/compiler/source/compiler.h"
#include "tools/diff/model_diff.h"

namespace qzlog_compiler {

/// Auxiliary definitions, a source or a compiled file.
struct AuxFile {
  std::string content;
  std::string name;  ///< what diagnostics call it
};

/// Checks that auxiliary definitions extend a standard model. Positions in a compiled file count its entries.
CompileResult check_aux_file(const AuxFile& aux, const DefinitionModel& standard, MessagePath path);

/// One change for each reason for which definitions that extend the old model do not extend the new one; the new model
/// has to outlive the result.
std::vector<DiffChange> find_aux_collisions(const AuxFile& aux, const DefinitionModel& new_model, MessagePath path);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_DIFF_AUX_COLLISION_H
