#ifndef QZLOG_TOOLS_CHECK_COMPILED_CHECK_H
#define QZLOG_TOOLS_CHECK_COMPILED_CHECK_H

#include <string_view>

#include "tools/check/check_report.h"
#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_tool {

/// A compiled file as it was read.
struct CompiledFile {
  std::string_view bytes;
  const qzlog_compiler::DefinitionModel* model = nullptr;
};

/// Reports what the library takes from a compiled file without a word and then does something else with than its writer
/// meant, or fails at later. `standard` is null unless the file is an auxiliary one. `path`: the rendering path or
/// paths that count; what fails on all of them is an error.
void check_compiled(const CompiledFile& file, const qzlog_compiler::DefinitionModel* standard,
                    qzlog_compiler::RenderingPaths path, CheckReport& report);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHECK_COMPILED_CHECK_H
