#include "tools/merge/merge_inputs.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/logs/unreadable_input.h"

namespace qzlog_tool {

namespace {

InputFiles files_of(const LogSeries& series) {
  InputFiles files;
  files.were_found = true;
  for (const SeriesPlace place : series_files(series)) files.paths.push_back(series.path_of(place));
  return files;
}

}  // namespace

std::vector<InputFiles> merge_inputs(const std::string& operand) {
  std::error_code ignored;
  // It has one series' files, one file, or says what is wrong.
  if (operand == "-" || !std::filesystem::is_directory(operand, ignored)) return {input_files(operand)};
  std::vector<InputFiles> inputs;
  const FolderLogs logs = logs_in(operand);
  for (const LogSeries& series : logs.series) {
    InputFiles files = files_of(series);
    if (!files.paths.empty()) inputs.push_back(std::move(files));
  }
  for (const std::string& path : logs.files) inputs.push_back({{path}, true});
  if (inputs.empty()) return {input_files(operand)};
  return inputs;
}

}  // namespace qzlog_tool
