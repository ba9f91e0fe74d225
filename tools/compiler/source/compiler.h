#ifndef QZLOG_TOOLS_COMPILER_SOURCE_COMPILER_H
#define QZLOG_TOOLS_COMPILER_SOURCE_COMPILER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

struct CompileOptions {
  RenderingPaths path = RenderingPaths::kBoth;
  const DefinitionModel* standard = nullptr;  ///< the definitions that an auxiliary source extends
  std::string standard_file = {};             ///< what diagnostics call the file that `standard` came from
  /// Also warn about what is legal but would surprise readers, and about accepted warnings that do not occur: for those
  /// who write definitions, not for those who use them.
  bool surprises = true;
  bool names = true;  ///< with a names section in the compiled file
};

struct CompileResult {
  DefinitionModel model;
  std::string bytes;  ///< the compiled file; empty after an error
  std::vector<Finding> diagnostics;

  bool ok() const { return !has_errors(diagnostics); }
};

/// Compiles a definition source. `file_name` is what diagnostics call it. Every mistake is in the diagnostics, sorted
/// by position; warnings alone leave a result. Throws `std::length_error` when the compiled file would exceed 4 GiB.
CompileResult compile_source(std::string_view text, const std::string& file_name, const CompileOptions& options);

/// Compiles an auxiliary source over standard definitions without an error, and both into one standard file: what the
/// library holds after loading the two. `standard_file` is what diagnostics call the standard source. The diagnostics
/// are those of the auxiliary source. Throws as `compile_source` does.
CompileResult compile_merged(DefinitionModel standard, const std::string& standard_file, std::string_view text,
                             const std::string& file_name, RenderingPaths path, bool names = true);

/// The warning that the names of a compiled file are damaged.
Finding names_warning(const LdfDamage& damage, const std::string& file_name);
/// The same for a file that was read, if its names are.
std::vector<Finding> warnings_of(const LdfFile& file, const std::string& file_name);

/// What forbids to build on the definitions of a compiled file: damage, or more of something than the library counts.
/// At most one error.
std::vector<Finding> errors_of(const LdfFile& file, const std::string& file_name);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_COMPILER_H
