#include "tools/render/log_reading.h"

#include "tools/logs/log_reading.h"

namespace qzlog_tool {

namespace {

LogReading reading_of(EntryRendering& rendering) {
  return {
      .output = rendering.output(),
      .handler = rendering,
      .read = [&rendering](qz_LOG_EntryReader& reader) { rendering.render(reader); },
      .fail = [&rendering](
                  const std::string& reason) { rendering.errors().report(qzlog_compiler::Severity::kError, reason); },
      .is_complete = [&rendering] { return rendering.is_complete(); }};
}

}  // namespace

bool read_input(const std::string& path, bool may_be_gone, EntryRendering& rendering) {
  return read_log(path, may_be_gone, reading_of(rendering));
}

bool read_inputs(const std::vector<std::string>& operands, EntryRendering& rendering) {
  return read_logs(operands, reading_of(rendering));
}

}  // namespace qzlog_tool
