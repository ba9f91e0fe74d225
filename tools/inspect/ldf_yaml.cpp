#include "tools/inspect/ldf_yaml.h"

#include <utility>

#include "tools/compiler/file/ldf_reader.h"

namespace qzlog_compiler {
namespace {

std::string entry_text(std::uint32_t id) { return "entry " + std::to_string(id) + ": "; }

/// The pairs whose records are whole.
std::vector<LdfSurveyedPair> whole_pairs(const LdfSurvey& survey) {
  std::vector<LdfSurveyedPair> pairs;
  for (const LdfSurveyedPair& pair : survey.pairs()) {
    if (!pair.unread && !pair.cut && !pair.wrong_id) pairs.push_back(pair);
  }
  return pairs;
}

DefinitionModel to_model(const LdfSurvey& survey, const std::vector<LdfSurveyedPair>& pairs) {
  DefinitionModel model;
  model.version = survey.header().version();
  for (const LdfAttributeRecord& global : survey.globals()) model.globals.push_back(to_definition(global));
  for (const LdfSurveyedPair& pair : pairs) model.entries.push_back(to_definition(survey.entry(pair)));
  if (survey.names()) apply_names(*survey.names(), model);
  return model;
}

void add_obstacle(LdfYaml& yaml, std::size_t offset, std::string text) {
  if (++yaml.obstacle_count <= LdfSurvey::kKeptDamages) yaml.obstacles.push_back({offset, std::move(text)});
}

void refuse_replaced_pairs(const LdfSurvey& survey, LdfYaml& yaml) {
  for (std::size_t i = 0; i < survey.pairs().size(); ++i) {
    const LdfSurveyedPair& pair = survey.pairs()[i];
    if (!pair.replaced) continue;
    add_obstacle(yaml, survey.pair_offset(i),
                 entry_text(pair.id) + "a later pair of the entry map has the same ID and replaces it");
  }
}

}  // namespace

LdfYaml write_yaml(const LdfSurvey& survey, const DefinitionModel* standard) {
  LdfYaml result;
  refuse_replaced_pairs(survey, result);
  if (!result.obstacles.empty()) return result;
  const std::vector<LdfSurveyedPair> pairs = whole_pairs(survey);
  ModelYaml yaml = write_yaml(to_model(survey, pairs), standard);
  result.source = std::move(yaml.source);
  for (const YamlObstacle& obstacle : yaml.obstacles) {
    if (obstacle.entry) {
      const LdfSurveyedPair& pair = pairs[*obstacle.entry];
      add_obstacle(result, pair.record_offset, entry_text(pair.id) + obstacle.text);
    } else {
      add_obstacle(result, 0, obstacle.text);
    }
  }
  return result;
}

}  // namespace qzlog_compiler
