#include "tools/render/log_reading.h"

#include <utility>

#include "tools/logs/unreadable_input.h"
#include "tools/merge/merge_inputs.h"
#include "tools/merge/merged_logs.h"

namespace qzlog_tool {

namespace {

bool read_lines(std::vector<InputFiles> inputs, EntryRendering& rendering) {
  const LogReading reading = reading_of(rendering);
  qz_LOG_EntryLine nothing;
  MergedLogs logs(std::move(inputs),
                  {.open = [&](const std::string& path, bool may_be_gone) -> std::unique_ptr<qz_LOG_ByteSource> {
                     return open_log(path, may_be_gone, reading.output);
                   },
                   .fail = reading.fail,
                   .handler = &rendering,
                   .choice = rendering.line_choice(),
                   .before_line = [&](std::string_view line) { rendering.use_definitions(line); },
                   .nothing = nothing});
  rendering.render(logs);
  return logs.all_read();
}

}  // namespace

LogReading reading_of(EntryRendering& rendering) {
  return {
      .output = rendering.output(),
      .handler = rendering,
      .read = [&rendering](qz_LOG_EntryReader& reader) { rendering.render(reader); },
      .fail = [&rendering](
                  const std::string& reason) { rendering.reporter().report(qzlog_compiler::Severity::kError, reason); },
      .is_complete = [&rendering] { return rendering.is_complete(); }};
}

bool read_input(const std::string& path, bool may_be_gone, EntryRendering& rendering) {
  return read_log(path, may_be_gone, reading_of(rendering));
}

bool read_inputs(const std::vector<std::string>& operands, EntryRendering& rendering) {
  return read_logs(operands, reading_of(rendering));
}

bool read_merged(const std::vector<std::string>& operands, EntryRendering& rendering) {
  bool all_found = true;
  std::vector<InputFiles> inputs;
  for (const std::string& operand : operands) {
    try {
      for (InputFiles& files : merge_inputs(operand)) inputs.push_back(std::move(files));
    } catch (const UnreadableInput& failure) {
      all_found = false;
      rendering.reporter().report(qzlog_compiler::Severity::kError, failure.what());
    }
  }
  return read_lines(std::move(inputs), rendering) && all_found;
}

}  // namespace qzlog_tool
