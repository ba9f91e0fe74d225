// Compiles the input as a definition source, shows where the diagnostics are, and reads the compiled bytes back.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/source/compiler.h"
#include "tools/compiler/source/model_warnings.h"
#include "tools/report/source_excerpt.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const qzlog_compiler::CompileResult result = qzlog_compiler::compile_source(text, "input.yaml", {});
  const qzlog_compiler::SourceLines lines(text);
  for (const qzlog_compiler::Finding& diagnostic : result.diagnostics) {
    if (diagnostic.place.known() && diagnostic.place.column < 1000 && !lines.excerpt(diagnostic.place)) {
      __builtin_trap();
    }
  }
  if (!result.ok()) return 0;
  const qzlog_compiler::LdfFile again = qzlog_compiler::read_ldf(result.bytes);
  if (!errors_of(again, "input.ldf").empty() || again.names_damage ||
      again.model.entries.size() != result.model.entries.size())
    __builtin_trap();
  find_model_warnings(again.model, nullptr, qzlog_compiler::RenderingPaths::kBoth);
  return 0;
}
