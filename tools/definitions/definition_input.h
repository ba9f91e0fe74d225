#ifndef QZLOG_TOOLS_DEFINITIONS_DEFINITION_INPUT_H
#define QZLOG_TOOLS_DEFINITIONS_DEFINITION_INPUT_H

#include <optional>
#include <string>
#include <vector>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/report/finding.h"

namespace qzlog_tool {

/// A definition file for commands that look at what it says: a compiled one, or a source, which is compiled.
struct DefinitionInput {
  std::string shown_path;
  bool is_source = false;
  std::string source;  ///< its text, which diagnostics show
  std::string bytes;   ///< the compiled file; empty for a source with errors
  qzlog_compiler::DefinitionModel model;
  std::optional<qzlog_compiler::LdfDamage> damage;   ///< of a compiled file; the model ends before it
  std::vector<qzlog_compiler::Finding> diagnostics;  ///< of a source

  bool is_whole() const { return !damage && !qzlog_compiler::has_errors(diagnostics); }
};

/// Reads a file, "-" from standard input; one named *.ldf is taken for compiled whatever it holds. `standard`: the
/// definitions that it extends, or null. Throws CommandError (cannot run) when it cannot be read.
DefinitionInput read_definition_input(const std::string& path, const DefinitionInput* standard,
                                      qzlog_compiler::MessagePath message_path);

/// Throws CommandError (cannot run) when both are standard input, which can be read once.
void refuse_shared_input(const std::string& standard, const std::string& auxiliary);

/// "icu", "narrow" or "both".
qzlog_compiler::MessagePath message_path_of(const std::string& name);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_DEFINITION_INPUT_H
