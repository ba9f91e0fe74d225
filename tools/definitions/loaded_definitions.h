#ifndef QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H
#define QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H

#include <string>

#include "tools/compiler/message/message_lowering.h"

namespace qzlog_tool {

/// Hands definitions to the library: compiled ones as they are, sources compiled for `path`. `auxiliary` may be
/// empty. A compiler's diagnostics go to stderr. Throws CommandError: cannot run for a file that cannot be read,
/// findings for one that is wrong.
void load_definitions(const std::string& standard, const std::string& auxiliary, qzlog_compiler::RenderingPaths path);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H
