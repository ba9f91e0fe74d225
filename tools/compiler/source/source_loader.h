#ifndef QZLOG_TOOLS_COMPILER_SOURCE_SOURCE_LOADER_H
#define QZLOG_TOOLS_COMPILER_SOURCE_SOURCE_LOADER_H

#include <string_view>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/compiler/source/accepted_warnings.h"
#include "tools/compiler/source/yaml_tree.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// Reads a definition source: checks everything that can be wrong with the source itself, fills in the defaults and
/// writes the stored templates. With `standard` the source is an auxiliary one: entries that the standard definitions
/// have may leave out message and mask, keep its word, and refer to its attributes. After an error the model holds what
/// could be read. What the source accepts is added to `accepted`. `source` is the text that `tree` was parsed from.
DefinitionModel load_source(std::string_view source, const YamlTree& tree, RenderingPaths path,
                            const ModelIndex* standard, AcceptedWarnings& accepted, Findings& diagnostics);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_SOURCE_LOADER_H
