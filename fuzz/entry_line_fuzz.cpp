// Reads the input as lines of entries, by the definitions of one entry with an attribute of each type.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "qzlog/entry_lines.h"
#include "qzlog/logattrib.h"
#include "qzlog/logentry.h"

namespace {

/// Looks at all that an error says.
class Errors : public qz_LOG_LineErrorHandler {
 public:
  void TakeLineError(const qz_LOG_LineError& error) override {
    if (error.column > error.source_length + 1 || error.text[0] == '\0' || error.rule[0] == '\0') std::abort();
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static Errors errors;
  static qz_LOG_EntryLine line;
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(bytes, size, &errors);
  while (reader.Next(line)) {
    for (std::size_t index = 0; index < line.GetLostCount(); ++index) line.GetLost(index);
    line.GetEntry().GetEntryID();
  }
  return 0;
}
