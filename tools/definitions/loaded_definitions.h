#ifndef QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H
#define QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H

#include <functional>
#include <string>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_tool {

/// Takes what a file defines, during the call.
using UseModel = std::function<void(const qzlog_compiler::DefinitionModel&)>;

/// Hands definitions to the library: compiled ones as they are, sources compiled for `path`. `auxiliary` may be
/// empty. `use`, where it is given, is called with the models of the standard and of the auxiliary file; else those of
/// compiled files are not made. A compiler's diagnostics go to stderr. Throws CommandError: cannot run for a file that
/// cannot be read, findings for one that is wrong.
void load_definitions(const std::string& standard, const std::string& auxiliary, qzlog_compiler::RenderingPaths path,
                      const UseModel& use = nullptr);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H
