// Compiles the input as a definition source, and reads the compiled bytes back.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tools/compiler/compiler.h"
#include "tools/compiler/ldf_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const qzlog_compiler::CompileResult result = qzlog_compiler::compile_source(text, "input.yaml", {});
  if (!result.ok()) return 0;
  const qzlog_compiler::CompileResult again = qzlog_compiler::load_standard(result.bytes, "input.ldf");
  if (!again.ok() || again.model.entries.size() != result.model.entries.size()) __builtin_trap();
  return 0;
}
