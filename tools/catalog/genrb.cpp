#include "tools/catalog/genrb.h"

#include <unistd.h>

#include "tools/catalog/compiled_bundle.h"
#include "tools/system/child_process.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/temporary_folder.h"

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

/// Its exit status alone does not tell that everything was written.
std::string read_result(const std::string& program, const std::string& path, const BundleSource& source) {
  if (::access(path.c_str(), F_OK) != 0) {
    throw CommandError(kExitFindings, "'" + program + "' has not written '" + path + "', but says that it has");
  }
  std::string bundle = qzlog_tool::read_file(path);
  if (is_compiled_from(bundle, source)) return bundle;
  throw CommandError(kExitFindings,
                     "'" + program + "' has not written '" + path + "' completely, but says that it has");
}

}  // namespace

std::vector<NamedBundle> run_genrb(const std::string& program, const std::vector<BundleSource>& sources) {
  const TemporaryFolder folder;
  std::vector<std::string> arguments = {program, "--quiet", "--encoding", "UTF-8", "--destdir", folder.path()};
  for (const BundleSource& source : sources) {
    arguments.push_back(folder.add_file(source.name + ".txt", genrb_text(source)));
  }
  const ProgramResult result = run(arguments);
  if (result.status != 0) report_failure(program, result.status, result.output);
  std::vector<NamedBundle> results;
  results.reserve(sources.size());
  for (const BundleSource& source : sources) {
    results.push_back({source.name, read_result(program, folder.path() + '/' + source.name + ".res", source)});
  }
  return results;
}

}  // namespace qzlog_catalog
