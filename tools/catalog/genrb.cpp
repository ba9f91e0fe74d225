#include "tools/catalog/genrb.h"

#include "tools/child_process.h"
#include "tools/command_error.h"
#include "tools/file_descriptor.h"
#include "tools/output_file.h"
#include "tools/temporary_folder.h"

namespace qzlog_catalog {
namespace {

using qzlog_tool::CommandError;
using qzlog_tool::kExitFindings;
using qzlog_tool::ProgramErrors;
using qzlog_tool::ProgramResult;
using qzlog_tool::run_program;
using qzlog_tool::TemporaryFolder;

ProgramResult run(const std::vector<std::string>& arguments) {
  try {
    return run_program(arguments, ProgramErrors::kWithOutput);
  } catch (const CommandError& error) {
    throw CommandError(error.exit_status(), std::string(error.what()) +
                                                "; it is ICU's compiler for resource bundles (Debian: icu-devtools)");
  }
}

[[noreturn]] void report_failure(const std::string& program, int status, std::string messages) {
  while (messages.ends_with('\n')) messages.pop_back();
  throw CommandError(kExitFindings, "'" + program + "' has failed with status " + std::to_string(status) +
                                        (messages.empty() ? "" : ":\n" + messages));
}

}  // namespace

std::vector<NamedBundle> run_genrb(const std::string& program, const std::vector<NamedBundle>& sources) {
  const TemporaryFolder folder;
  const std::string prefix = folder.path() + '/';
  std::vector<std::string> arguments = {program, "--quiet", "--encoding", "UTF-8", "--destdir", folder.path()};
  for (const NamedBundle& source : sources) {
    arguments.push_back(prefix + source.name + ".txt");
    qzlog_tool::write_file(arguments.back(), source.content);
  }
  const ProgramResult result = run(arguments);
  if (result.status != 0) report_failure(program, result.status, result.output);
  std::vector<NamedBundle> results;
  results.reserve(sources.size());
  for (const NamedBundle& source : sources) {
    results.push_back({source.name, qzlog_tool::read_file(prefix + source.name + ".res")});
  }
  return results;
}

}  // namespace qzlog_catalog
