#ifndef QZLOG_TOOLS_DEFINITIONS_DEFINITION_FILES_H
#define QZLOG_TOOLS_DEFINITIONS_DEFINITION_FILES_H

#include <cstdint>
#include <string>
#include <unordered_map>

#include "tools/compiler/message/message_lowering.h"

namespace qzlog_tool {

/// Entry IDs by symbolic name.
using EntryNames = std::unordered_map<std::string, std::uint32_t>;

/// What the library was given to know.
struct LoadedDefinitions {
  EntryNames names;         ///< of the entries that a source defines
  bool has_source = false;  ///< false: only compiled files, `names` is empty
};

/// Hands definition files to the library: compiled ones as they are, sources compiled for `path`. `auxiliary` may be
/// empty. A compiler's diagnostics go to stderr. Throws CommandError: cannot run for a file that cannot be read,
/// findings for one that is wrong.
LoadedDefinitions load_definitions(const std::string& standard, const std::string& auxiliary,
                                   qzlog_compiler::MessagePath path);

/// The names of the entries that a definition source defines, for the tools that need nothing else of it. Throws as
/// above, and cannot run for a compiled file, which has no names.
EntryNames load_entry_names(const std::string& source);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_DEFINITION_FILES_H
