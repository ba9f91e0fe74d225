#include "tools/merge/definition_options.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

namespace qzlog_tool {

namespace {

struct Given {
  std::vector<std::string> standard;
  std::vector<std::string> auxiliary;
};

void add_auxiliary(const std::string& path, DefinitionPaths& paths) {
  if (!paths.auxiliary.empty()) {
    throw CLI::ValidationError(
        "--aux", "'" + paths.standard + "' has '" + paths.auxiliary + "' already: one belongs to each --definitions");
  }
  paths.auxiliary = path;
}

/// In the order in which the options stand on the command line.
std::vector<DefinitionPaths> pair_up(const CLI::App& command, const CLI::Option* standard, const CLI::Option* auxiliary,
                                     const Given& given) {
  std::vector<DefinitionPaths> paths;
  for (const std::string& path : given.standard) paths.push_back({path, ""});
  std::size_t standards = 0;
  std::size_t auxiliaries = 0;
  for (const CLI::Option* const option : command.parse_order()) {
    if (option == standard) ++standards;
    if (option != auxiliary) continue;
    add_auxiliary(given.auxiliary[auxiliaries++], paths[standards > 0 ? standards - 1 : 0]);
  }
  return paths;
}

}  // namespace

void add_definition_options(CLI::App& command, std::vector<DefinitionPaths>& paths) {
  const auto given = std::make_shared<Given>();
  const auto* const standard = command
                                   .add_option("--definitions", given->standard,
                                               "The log definition file, compiled or a source; others may follow")
                                   ->type_name("STD.ldf|STD.yaml")
                                   ->expected(1)
                                   ->allow_extra_args(false)
                                   ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                                   ->required();
  const auto* const auxiliary =
      command.add_option("--aux", given->auxiliary, "An auxiliary definition file for the --definitions before it")
          ->type_name("AUX.ldf|AUX.yaml")
          ->expected(1)
          ->allow_extra_args(false)
          ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  command.parse_complete_callback(
      [&command, &paths, given, standard, auxiliary] { paths = pair_up(command, standard, auxiliary, *given); });
}

std::vector<std::string> files_of(const std::vector<DefinitionPaths>& paths) {
  std::vector<std::string> files;
  for (const DefinitionPaths& own : paths) {
    files.push_back(own.standard);
    files.push_back(own.auxiliary);
  }
  return files;
}

}  // namespace qzlog_tool
