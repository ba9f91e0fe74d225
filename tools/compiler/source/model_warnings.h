#ifndef QZLOG_TOOLS_COMPILER_SOURCE_MODEL_WARNINGS_H
#define QZLOG_TOOLS_COMPILER_SOURCE_MODEL_WARNINGS_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/report/finding.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {

/// Something legal in a model that would surprise its readers.
struct ModelWarning {
  /// Another place that has to do with it.
  struct Place {
    bool in_standard = false;  ///< in the standard model's source
    SourcePosition position;
    std::string text;
  };

  Rule rule = Rule::kUnusedAttribute;
  std::uint32_t entry_id = 0;
  bool about_entry = true;  ///< false: about the file, `entry_id` means nothing
  SourcePosition position;  ///< unknown for compiled files
  std::string text;
  std::string hint;           ///< may be empty
  std::vector<Place> places;  ///< none in compiled files
};

/// Looks at definitions and stored templates only, so a compiled file gives the warnings that its source gave.
/// `standard` is null unless `model` is an auxiliary file's. `path`: the rendering path or paths that count.
/// The result is ordered as the model: warnings about the file first, then entry by entry.
std::vector<ModelWarning> find_model_warnings(const DefinitionModel& model, const DefinitionModel* standard,
                                              RenderingPaths path);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_MODEL_WARNINGS_H
