// Shows the input as `qzlog inspect` does, in every form; a source that comes out has to compile.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "tools/compiler/source/compiler.h"
#include "tools/inspect/ldf_annotation.h"
#include "tools/inspect/ldf_json.h"
#include "tools/inspect/ldf_survey.h"
#include "tools/inspect/ldf_table.h"
#include "tools/inspect/ldf_yaml.h"

using namespace qzlog_compiler;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const LdfSurvey survey(std::string_view(reinterpret_cast<const char*>(bytes), size));
  std::ostringstream out;
  write_table(survey, 80, out);
  write_json(survey, {}, out);
  write_annotation(survey, 80, out);
  const LdfYaml yaml = write_yaml(survey, nullptr);
  if (yaml.source.empty() == yaml.obstacles.empty()) std::abort();
  if (!yaml.source.empty() && !compile_source(yaml.source, "", {}).ok()) std::abort();
  return 0;
}
