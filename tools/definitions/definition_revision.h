#ifndef QZLOG_TOOLS_DEFINITIONS_DEFINITION_REVISION_H
#define QZLOG_TOOLS_DEFINITIONS_DEFINITION_REVISION_H

#include <string>

#include "tools/compiler/source/compiler.h"

namespace qzlog_tool {

/// The bytes of definitions, wherever they come from.
struct DefinitionRevision {
  std::string name;  ///< what diagnostics call it: "<stdin>" for "-"
  std::string content;
};

/// Reads a file, standard input for "-", or, for `git:REV:PATH`, what the repository of the working folder holds under
/// PATH at the revision REV; git's own complaints go to stderr. Throws CommandError (cannot run).
DefinitionRevision read_definition_revision(const std::string& argument);

/// Reads definitions from a source or a compiled file, told apart by their first bytes. The diagnostics hold errors
/// only.
qzlog_compiler::CompileResult load_definition_revision(const DefinitionRevision& input,
                                                       const qzlog_compiler::CompileOptions& options);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_DEFINITION_REVISION_H
