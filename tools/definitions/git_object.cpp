#include "tools/definitions/git_object.h"

#include <utility>
#include <vector>

#include "tools/system/child_process.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

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

/// REV:PATH. An empty REV stands for the index, as git has it.
std::string object_of(const std::string& argument) {
  std::string object = argument.substr(kGitPrefix.size());
  if (object.find(':') == std::string::npos || object.back() == ':') {
    throw CommandError(kExitCannotRun, "'" + argument + "' lacks a path; write git:REV:PATH");
  }
  if (object.front() == '-') {
    throw CommandError(kExitCannotRun, "'" + argument + "': a revision does not begin with '-'");
  }
  return object;
}

}  // namespace

bool names_git_object(std::string_view argument) { return argument.starts_with(kGitPrefix); }

std::string read_git_object(const std::string& argument) {
  std::vector<std::string> command = kGitCommand;
  command.push_back(object_of(argument));
  ProgramResult result = run_program(std::move(command), ProgramErrors::kToOurs, kGitVariables);
  if (result.status != 0) {
    throw CommandError(kExitCannotRun,
                       "cannot read '" + argument + "': git has failed with status " + std::to_string(result.status));
  }
  return std::move(result.output);
}

}  // namespace qzlog_tool
