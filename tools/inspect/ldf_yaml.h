#ifndef QZLOG_TOOLS_INSPECT_LDF_YAML_H
#define QZLOG_TOOLS_INSPECT_LDF_YAML_H

#include <cstddef>
#include <string>
#include <vector>

#include "tools/inspect/ldf_survey.h"
#include "tools/inspect/model_yaml.h"

namespace qzlog_compiler {

/// Why a part of a compiled file has no definition source.
struct LdfObstacle {
  std::size_t offset = 0;
  std::string text;
};

struct LdfYaml {
  std::string source;                  ///< empty when there is an obstacle
  std::vector<LdfObstacle> obstacles;  ///< the first `LdfSurvey::kKeptDamages`
  std::size_t obstacle_count = 0;
};

/// A definition source for everything in the file that is whole; see `write_yaml` of a model.
LdfYaml write_yaml(const LdfSurvey& survey, const DefinitionModel* standard);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_LDF_YAML_H
