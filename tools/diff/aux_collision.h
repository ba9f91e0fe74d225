#ifndef QZLOG_TOOLS_DIFF_AUX_COLLISION_H
#define QZLOG_TOOLS_DIFF_AUX_COLLISION_H

#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/definitions/definition_file.h"
#include "tools/definitions/definitions.h"
#include "tools/diff/model_diff.h"

namespace qzlog_tool {

/// Checks that auxiliary definitions extend standard ones; the diagnostics hold errors only.
Definitions check_aux_file(const DefinitionFile& aux, const Definitions& standard, qzlog_compiler::RenderingPaths path);

/// One change for each reason for which definitions that extend the old ones do not extend the new ones, which have to
/// outlive the result.
std::vector<qzlog_compiler::DiffChange> find_aux_collisions(const DefinitionFile& aux,
                                                            const Definitions& new_definitions,
                                                            qzlog_compiler::RenderingPaths path);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DIFF_AUX_COLLISION_H
