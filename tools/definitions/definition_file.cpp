#include "tools/definitions/definition_file.h"

#include <filesystem>
#include <utility>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/definitions/git_object.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

DefinitionFile read_definition_file(const std::string& path) {
  std::string content = names_git_object(path) ? read_git_object(path) : read_file(path);
  const bool is_compiled = qzlog_compiler::looks_like_ldf(content) || std::filesystem::path(path).extension() == ".ldf";
  return {path, display_name(path), std::move(content), !is_compiled};
}

DefinitionFile read_definition_source(const std::string& path) {
  DefinitionFile file = read_definition_file(path);
  if (file.is_source) return file;
  throw CommandError(kExitCannotRun, "'" + file.shown_path + "' is a compiled definition file; give its source");
}

bool names_file(const std::string& path) { return path != "-" && !names_git_object(path); }

}  // namespace qzlog_tool
