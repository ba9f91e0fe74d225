#ifndef QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H
#define QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H

#include <cstdint>
#include <string>
#include <unordered_map>

#include "tools/compiler/message/message_lowering.h"

namespace qzlog_tool {

/// Entry IDs by symbolic name.
using EntryNames = std::unordered_map<std::string, std::uint32_t>;

/// What the library was given to know.
struct LoadedDefinitions {
  EntryNames names;        ///< of the entries that a source defines, or a compiled file with names
  bool has_names = false;  ///< false: only compiled files without names, `names` is empty
};

/// Hands definitions to the library: compiled ones as they are, sources compiled for `path`. `auxiliary` may be
/// empty. A compiler's diagnostics go to stderr. Throws CommandError: cannot run for a file that cannot be read,
/// findings for one that is wrong.
LoadedDefinitions load_definitions(const std::string& standard, const std::string& auxiliary,
                                   qzlog_compiler::RenderingPaths path);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_LOADED_DEFINITIONS_H
