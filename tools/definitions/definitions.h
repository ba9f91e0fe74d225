#ifndef QZLOG_TOOLS_DEFINITIONS_DEFINITIONS_H
#define QZLOG_TOOLS_DEFINITIONS_DEFINITIONS_H

#include <string>
#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/definitions/definition_file.h"
#include "tools/report/finding.h"

namespace qzlog_tool {

/// What definitions say: those of a compiled file, or those of a source, which is compiled.
struct Definitions {
  std::string shown_path;  ///< as texts show it
  bool is_source = false;
  /// The model has everything: no damage ends it, no error in the source leaves a part of it out.
  bool is_whole = false;
  std::string source;  ///< the text of a source, which diagnostics show; empty for a compiled file
  std::string bytes;   ///< the compiled file; empty for a source with errors
  qzlog_compiler::DefinitionModel model;
  /// Those of a source, sorted; one error for a compiled file that is damaged, or in which there is more of something
  /// than the library counts, and one warning where its names are damaged.
  std::vector<qzlog_compiler::Finding> diagnostics;

  bool ok() const { return !qzlog_compiler::has_errors(diagnostics); }
};

struct ReadingOptions {
  const Definitions* standard = nullptr;  ///< the definitions that an auxiliary source extends
  qzlog_compiler::RenderingPaths path = qzlog_compiler::RenderingPaths::kBoth;
  /// With the warnings about what surprises readers, which matter to those who write definitions.
  bool surprises = true;
  bool names = true;  ///< sources are compiled with a names section
};

/// Throws CommandError (findings) for a source that would give too large a compiled file.
Definitions read_definitions(DefinitionFile file, const ReadingOptions& options);

/// The same for what builds on the definitions and is not asked about them: the diagnostics hold errors, and of the
/// warnings the one that a compiled file's names are damaged.
Definitions read_errors_only(DefinitionFile file, ReadingOptions options);

/// The same for what cannot go on with errors: prints them on standard error and throws CommandError(`exit_status`),
/// without a text.
Definitions read_without_errors(DefinitionFile file, const ReadingOptions& options, int exit_status);

/// Compiles an auxiliary source over `standard`, in which there is no error, and both into one standard file: what the
/// library holds after loading the two. The diagnostics are those of the auxiliary source. Throws as read_definitions
/// does.
Definitions merge_definitions(const Definitions& standard, DefinitionFile auxiliary,
                              qzlog_compiler::RenderingPaths path, bool names);

/// Shows the diagnostics on standard error, with the lines of the source and of the one that it extends.
void print_findings(const Definitions& definitions, const Definitions* standard);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_DEFINITIONS_H
