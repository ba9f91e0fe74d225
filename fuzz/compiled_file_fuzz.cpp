// Reads the input as a compiled definition file with the compiler's own reader.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tools/compiler/file/ldf_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  qzlog_compiler::read_ldf(std::string_view(reinterpret_cast<const char*>(bytes), size));
  return 0;
}
