#include "tools/inspect/inspect_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tools/compiler/source/compiler.h"
#include "tools/definitions/definition_file.h"
#include "tools/definitions/definitions.h"
#include "tools/inspect/inspect_rules.h"
#include "tools/inspect/ldf_annotation.h"
#include "tools/inspect/ldf_json.h"
#include "tools/inspect/ldf_survey.h"
#include "tools/inspect/ldf_table.h"
#include "tools/inspect/ldf_yaml.h"
#include "tools/options/raw_option.h"
#include "tools/report/finding_printer.h"
#include "tools/report/passed_over.h"
#include "tools/report/source_rules.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/standard_input.h"
#include "tools/system/standard_output.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::AnyRule;
using qzlog_compiler::Finding;
using qzlog_compiler::LdfDamage;
using qzlog_compiler::LdfObstacle;
using qzlog_compiler::LdfSurvey;
using qzlog_compiler::Rule;

constexpr const char* kInspectFooter =
    "The tables show the header, the global attributes, the entry map and each entry's record with their offsets; on "
    "a\n"
    "terminal, lines are cut to its width. A damaged file is shown as far as it can be read; each damage is reported "
    "on\n"
    "standard error with its offset, as FILE: offset N: error: REASON [rule-name]. Damaged names are a warning: "
    "nothing "
    "else\n"
    "depends on them.\n"
    "\n"
    "Exit status: 0 success, 1 the file is damaged or has no source, 2 wrong usage or a file that cannot be read.\n"
    "\n"
    "Examples:\n"
    "  qzlog inspect storage.ldf\n"
    "  qzlog inspect storage.ldf --json | jq '.entries[] | {id, message}'\n"
    "  qzlog inspect storage.ldf --yaml > storage.yaml\n"
    "  qzlog inspect site.ldf --yaml --aux-of storage.ldf > site.yaml\n"
    "  qzlog inspect - --annotate < storage.ldf | less";

struct InspectOptions {
  std::string file;
  std::string standard;
  bool json = false;
  bool yaml = false;
  bool annotate = false;
};

Finding error_at(std::size_t offset, const std::string& file, AnyRule rule, std::string text) {
  Finding finding{display_name(file), {}, qzlog_compiler::Severity::kError, rule, std::move(text)};
  finding.offset = offset;
  return finding;
}

std::vector<Finding> damages_of(const LdfSurvey& survey, const std::string& file) {
  std::vector<Finding> findings;
  for (const LdfDamage& damage : survey.damages()) {
    const std::string detail = damage.detail.empty() ? "" : " (" + damage.detail + ")";
    findings.push_back(error_at(damage.offset, file, Rule::kBadDefinitionFile, damage.reason + detail));
  }
  return findings;
}

std::vector<Finding> warnings_of(const LdfSurvey& survey, const std::string& file) {
  if (!survey.names() || !survey.names()->damage) return {};
  return {qzlog_compiler::names_warning(*survey.names()->damage, display_name(file))};
}

/// Prints some of the findings of a rule, and says how many there are besides.
void print(std::span<const Finding> findings, std::size_t count, const std::string& file, AnyRule rule) {
  FindingPrinter(stderr_has_colour()).print(findings, std::cerr);
  if (count == findings.size()) return;
  std::cerr << display_name(file) << ": " << count - findings.size() << " further errors [" << rule.name() << "]\n";
}

/// False when there is no source, and the reasons are told.
bool print_yaml(const LdfSurvey& survey, const InspectOptions& options) {
  Definitions standard;
  if (!options.standard.empty()) {
    standard = read_errors_only(read_definition_file(options.standard), {});
    print_findings(standard, nullptr);
    if (!standard.ok()) return false;
  }
  const auto yaml = qzlog_compiler::write_yaml(survey, options.standard.empty() ? nullptr : &standard.model);
  std::vector<Finding> findings;
  for (const LdfObstacle& obstacle : yaml.obstacles) {
    findings.push_back(error_at(obstacle.offset, options.file, InspectRule::kNoYamlForm, obstacle.text));
  }
  print(findings, yaml.obstacle_count, options.file, InspectRule::kNoYamlForm);
  std::cout << yaml.source;
  return yaml.obstacles.empty();
}

bool print_form(const LdfSurvey& survey, std::span<const Finding> findings, const InspectOptions& options) {
  if (options.yaml) return print_yaml(survey, options);
  const std::size_t columns = ::isatty(STDOUT_FILENO) == 1 ? output_columns() : 0;
  if (options.json) {
    qzlog_compiler::write_json(survey, findings, std::cout);
  } else if (options.annotate) {
    qzlog_compiler::write_annotation(survey, columns, std::cout);
  } else {
    qzlog_compiler::write_table(survey, columns, std::cout);
  }
  return true;
}

int inspect(const InspectOptions& options) {
  refuse_repeated_standard_input({options.file, options.standard});
  const std::string bytes = read_definition_file(options.file).content;
  const LdfSurvey survey(bytes);
  const std::vector<Finding> damages = damages_of(survey, options.file);
  const std::vector<Finding> warnings = warnings_of(survey, options.file);
  std::vector<Finding> findings = damages;
  findings.insert(findings.end(), warnings.begin(), warnings.end());
  const bool printed = print_form(survey, findings, options);
  flush_standard_output();
  for (const Finding& found : findings) {
    passed_over().add_at(is_error(found) ? "place" : "names section", found.rule.name(), found.file,
                         found.offset.value_or(0));
  }
  passed_over().add_several("place", qzlog_compiler::AnyRule(Rule::kBadDefinitionFile).name(),
                            display_name(options.file), survey.damage_count() - damages.size());
  print(damages, survey.damage_count(), options.file, Rule::kBadDefinitionFile);
  FindingPrinter(stderr_has_colour()).print(warnings, std::cerr);
  return printed && survey.damage_count() == 0 ? kExitSuccess : kExitFindings;
}

}  // namespace

void add_inspect_command(CLI::App& app, int& exit_status) {
  const auto options = std::make_shared<InspectOptions>();
  CLI::App* const command = app.add_subcommand("inspect", "Show what a log definition file holds");
  command->add_option("FILE", options->file, "Log definition file; - is standard input")->required();
  CLI::Option* const json = command->add_flag("--json", options->json, "Print JSON");
  CLI::Option* const yaml =
      command->add_flag("--yaml", options->yaml, "Print a definition source that compiles to the same records");
  CLI::Option* const annotate =
      command->add_flag("--annotate", options->annotate, "Print every byte of the file with its meaning");
  json->excludes(yaml, annotate);
  yaml->excludes(annotate);
  command
      ->add_option("--aux-of", options->standard,
                   "With --yaml: the definitions that an auxiliary file extends, compiled or source")
      ->type_name("STD")
      ->needs(yaml);
  command->footer(kInspectFooter);
  add_raw_option(*command);
  command->callback([options, &exit_status] { exit_status = inspect(*options); });
}

}  // namespace qzlog_tool
