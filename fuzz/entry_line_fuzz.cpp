// Reads the input as lines of entries, by the definition of an entry with an attribute of each type.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "qzlog/entry_lines.h"
#include "qzlog/logattrib.h"
#include "qzlog/logentry.h"
#include "tools/definitions/loaded_definitions.h"
#include "tools/system/temporary_folder.h"

namespace {

std::string source() {
  std::string text =
      "version: \"1.0\"\nglobals: [{name: TIMEZONE_DIFFERENCE, type: SInt2}, {name: DAYLIGHT_SAVING_ACTIVE, type: "
      "Bool}]\n"
      "entries:\n  - id: 1001\n    name: DISK_FULL\n    message: x\n    attributes: [{name: Name, type: Char32}";
  for (const qz_AttributeTypeName* type = AttributeTypeList; type->name != nullptr; ++type) {
    text += std::string(", {name: ") + type->name + ", type: " + type->name + "}";
  }
  return text + "]\n";
}

/// Returns that it was done, for a constant that is initialised once.
bool load() {
  const qzlog_tool::TemporaryFolder folder;
  qzlog_tool::load_definitions(folder.add_file("lines.yaml", source()), "", qzlog_compiler::RenderingPaths::kIcu);
  return true;
}

/// Looks at all that an error says.
class Errors : public qz_LOG_LineErrorHandler {
 public:
  void TakeLineError(const qz_LOG_LineError& error) override {
    if (error.column > error.source_length + 1 || error.text[0] == '\0' || error.rule[0] == '\0') std::abort();
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  [[maybe_unused]] static const bool is_loaded = load();
  static Errors errors;
  static qz_LOG_EntryLine line;
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(bytes, size, &errors);
  while (reader.Next(line)) {
    for (std::size_t index = 0; index < line.GetLostCount(); ++index) line.GetLost(index);
    if (!line.IsLoss() && !line.IsHeld() && line.GetEntry().GetLogLevel() > 9) std::abort();
  }
  return 0;
}
