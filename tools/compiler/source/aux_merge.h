#ifndef QZLOG_TOOLS_COMPILER_SOURCE_AUX_MERGE_H
#define QZLOG_TOOLS_COMPILER_SOURCE_AUX_MERGE_H

#include <string>

#include "tools/compiler/model/definition_model.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// Checks that an auxiliary model loads over a standard one: errors for what the library refuses, warnings for what it
/// silently leaves out or changes. Places in the standard definitions are shown as of the file `standard_file`.
void check_aux_merge(const DefinitionModel& aux, const ModelIndex& standard, const std::string& standard_file,
                     Findings& diagnostics);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_AUX_MERGE_H
