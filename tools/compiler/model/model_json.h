#ifndef QZLOG_TOOLS_COMPILER_MODEL_MODEL_JSON_H
#define QZLOG_TOOLS_COMPILER_MODEL_MODEL_JSON_H

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

/// A whole model, every key of the documented shape present: defaults filled in, types by their short names, messages
/// as written and as stored. Only `line` is left out where no source line is known, and `type_code` stands beside the
/// type "Unknown" of a code that has no name. Texts are the model's bytes; `json_text` makes them fit to print.
nlohmann::ordered_json to_json(const DefinitionModel& model);

/// JSON as commands print it: indented by two, UTF-8, a line break at the end. Bytes that are not UTF-8 (compiled files
/// may hold any) become U+FFFD.
std::string json_text(const nlohmann::ordered_json& json);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MODEL_MODEL_JSON_H
