// Reads the input as one line of JSON.
#include <cstddef>
#include <cstdint>
#include <string>

#include "tools/render/entry_error.h"
#include "tools/render/json_entry.h"
#include "tools/system/line_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static qzlog_tool::JsonEntryParser parser;
  std::string line(reinterpret_cast<const char*>(bytes), size);
  line.append(qzlog_tool::LineReader::kPaddingBytes, '\0');
  try {
    parser.parse(std::string_view(line).substr(0, size));
  } catch (const qzlog_tool::EntryError&) {
    return 0;
  }
  return 0;
}
