#ifndef QZLOG_TOOLS_INSPECT_MODEL_YAML_H
#define QZLOG_TOOLS_INSPECT_MODEL_YAML_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

/// Why a model has no definition source, and where.
struct YamlObstacle {
  std::optional<std::size_t> entry;  ///< its place in the model; none for the version and the global attributes
  std::string text;
};

struct ModelYaml {
  std::string source;  ///< empty when there is an obstacle
  std::vector<YamlObstacle> obstacles;
};

/// A definition source that compiles to a file with the model's records, for every path and, where the model extends
/// other definitions, with these. Texts are written as they are stored. The compiler itself is the judge: what it would
/// refuse is an obstacle. `standard` are the definitions that the model extends; null for none.
ModelYaml write_yaml(const DefinitionModel& model, const DefinitionModel* standard);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_MODEL_YAML_H
