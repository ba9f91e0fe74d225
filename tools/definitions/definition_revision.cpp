#include "tools/definitions/definition_revision.h"

#include <string_view>
#include <vector>

#include "tools/compiler/file/ldf_reader.h"
#include "tools/system/child_process.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::CompileOptions;
using qzlog_compiler::CompileResult;
using qzlog_compiler::Finding;

constexpr std::string_view kGitPrefix = "git:";

/// Whoever made a repository must not have programs run by what only reads it. The object is printed as it is stored,
/// without filters, text conversions and hooks; the index is read without a monitor; an object that a partial clone
/// lacks is not fetched. Whose repositories are read at all is left to git (safe.directory).
const std::vector<std::string> kGitCommand = {"git",
                                              "--no-pager",
                                              "--no-optional-locks",
                                              "-c",
                                              "core.fsmonitor=false",
                                              "-c",
                                              "core.hooksPath=/dev/null",
                                              "cat-file",
                                              "--end-of-options",
                                              "blob"};
const std::vector<std::string> kGitVariables = {"GIT_NO_LAZY_FETCH=1", "GIT_ALLOW_PROTOCOL=none",
                                                "GIT_TERMINAL_PROMPT=0"};

/// `object` is REV:PATH. An empty REV stands for the index, as git has it.
std::string read_from_git(const std::string& argument, const std::string& object) {
  if (object.find(':') == std::string::npos || object.back() == ':') {
    throw CommandError(kExitCannotRun, "'" + argument + "' lacks a path; write git:REV:PATH");
  }
  if (object.front() == '-') {
    throw CommandError(kExitCannotRun, "'" + argument + "': a revision does not begin with '-'");
  }
  std::vector<std::string> command = kGitCommand;
  command.push_back(object);
  ProgramResult result = run_program(std::move(command), ProgramErrors::kToOurs, kGitVariables);
  if (result.status != 0) {
    throw CommandError(kExitCannotRun,
                       "cannot read '" + argument + "': git has failed with status " + std::to_string(result.status));
  }
  return std::move(result.output);
}

}  // namespace

DefinitionRevision read_definition_revision(const std::string& argument) {
  if (argument.starts_with(kGitPrefix)) {
    return {argument, read_from_git(argument, argument.substr(kGitPrefix.size()))};
  }
  return {display_name(argument), read_file(argument)};
}

CompileResult load_definition_revision(const DefinitionRevision& input, const CompileOptions& options) {
  if (qzlog_compiler::looks_like_ldf(input.content)) return qzlog_compiler::load_standard(input.content, input.name);
  CompileResult result = qzlog_compiler::compile_source(input.content, input.name, options);
  std::erase_if(result.diagnostics,
                [](const Finding& found) { return found.severity != qzlog_compiler::Severity::kError; });
  return result;
}

}  // namespace qzlog_tool
