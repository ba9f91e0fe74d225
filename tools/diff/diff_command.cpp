#include "tools/diff/diff_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/definitions/definition_file.h"
#include "tools/definitions/definitions.h"
#include "tools/definitions/message_path_option.h"
#include "tools/diff/aux_collision.h"
#include "tools/diff/diff_accept.h"
#include "tools/diff/diff_report.h"
#include "tools/diff/model_diff.h"
#include "tools/diff/version_advice.h"
#include "tools/report/finding_json.h"
#include "tools/report/finding_printer.h"
#include "tools/report/source_rules.h"
#include "tools/system/command_error.h"
#include "tools/system/standard_input.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::AcceptedBreak;
using qzlog_compiler::DiffChange;
using qzlog_compiler::Finding;
using qzlog_compiler::Findings;
using qzlog_compiler::RenderingPaths;

constexpr const char* kDiffFooter =
    R"(OLD and NEW, and what --aux and --aux-of name, are definition sources, compiled files or git:REV:PATH, as in
git:HEAD:storage.yaml; - is standard input. Compiled files do not know how a text was written, and with
--strip neither the names and summaries of entries nor which attributes are sensitive: such things are compared where
both know them.

Exit status: 0 no break, or every one accepted; 1 breaks; 2 wrong usage, a file that cannot be read, or one with errors.

Examples:
  qzlog diff storage-2.5.ldf storage.yaml
  qzlog diff git:v2.5:storage.yaml storage.yaml --accept breaks.yaml
  qzlog diff git:HEAD:./storage.yaml storage.yaml --aux site.ldf --json)";

struct DiffOptions {
  std::string old_input;
  std::string new_input;
  std::string standard;
  std::vector<std::string> aux;
  std::string accept;
  std::string path = "both";
  bool json = false;
};

/// Everything that the command reads.
struct DiffInputs {
  RenderingPaths path = RenderingPaths::kBoth;
  Definitions standard;
  Definitions old_definitions;
  Definitions new_definitions;
  std::vector<DefinitionFile> aux;
  DefinitionFile accept_file;
  std::vector<AcceptedBreak> accepted;
};

/// Prints what was found; what has errors cannot be compared.
void refuse_errors(const std::vector<Finding>& diagnostics, const std::string& file, std::string_view text) {
  print_findings(diagnostics, file, text);
  if (qzlog_compiler::has_errors(diagnostics)) throw CommandError(kExitCannotRun, "");
}

Definitions read_compared(const std::string& path, const ReadingOptions& reading) {
  return read_without_errors(read_definition_file(path), reading, kExitCannotRun);
}

DefinitionFile read_aux(const std::string& path, const Definitions& old_definitions, RenderingPaths message_path) {
  DefinitionFile aux = read_definition_file(path);
  const Definitions checked = check_aux_file(aux, old_definitions, message_path);
  print_findings(checked, &old_definitions);
  if (!checked.ok()) throw CommandError(kExitCannotRun, "");
  return aux;
}

std::vector<AcceptedBreak> load_accepted(const DefinitionFile& input) {
  Findings diagnostics(input.shown_path);
  std::vector<AcceptedBreak> accepted = qzlog_compiler::load_accepted_breaks(input.content, diagnostics);
  refuse_errors(diagnostics.take_sorted(), input.shown_path, input.content);
  return accepted;
}

std::vector<std::string> paths_of(const DiffOptions& options) {
  std::vector<std::string> paths = options.aux;
  paths.insert(paths.end(), {options.old_input, options.new_input, options.standard, options.accept});
  return paths;
}

/// Fills `inputs`.
void read_inputs(const DiffOptions& options, DiffInputs& inputs) {
  refuse_repeated_standard_input(paths_of(options));
  inputs.path = message_path_of(options.path);
  ReadingOptions reading{.path = inputs.path};
  if (!options.standard.empty()) {
    inputs.standard = read_compared(options.standard, reading);
    reading.standard = &inputs.standard;
  }
  inputs.old_definitions = read_compared(options.old_input, reading);
  inputs.new_definitions = read_compared(options.new_input, reading);
  for (const std::string& aux : options.aux) {
    inputs.aux.push_back(read_aux(aux, inputs.old_definitions, inputs.path));
  }
  if (options.accept.empty()) return;
  inputs.accept_file = read_definition_file(options.accept);
  inputs.accepted = load_accepted(inputs.accept_file);
}

/// The changes of the models and the collisions, each of these behind the other changes of its entry.
std::vector<DiffChange> find_changes(const DiffInputs& inputs) {
  std::vector<DiffChange> changes =
      qzlog_compiler::compare_models(inputs.old_definitions.model, inputs.new_definitions.model);
  for (const DefinitionFile& aux : inputs.aux) {
    std::vector<DiffChange> collisions = find_aux_collisions(aux, inputs.new_definitions, inputs.path);
    std::move(collisions.begin(), collisions.end(), std::back_inserter(changes));
  }
  const auto entry_id = [](const DiffChange& change) {
    const auto* const entry = change.place.entry();
    return entry != nullptr ? std::optional(entry->id) : std::nullopt;  // what concerns no entry comes first
  };
  std::stable_sort(changes.begin(), changes.end(),
                   [&](const DiffChange& a, const DiffChange& b) { return entry_id(a) < entry_id(b); });
  return changes;
}

DiffReport make_report(const DiffInputs& inputs) {
  DiffReport report;
  report.old_version = inputs.old_definitions.model.version;
  report.new_version = inputs.new_definitions.model.version;
  report.knows_aux = !inputs.aux.empty();
  std::vector<DiffChange> changes = find_changes(inputs);
  report.advice = qzlog_compiler::judge_version(report.old_version, report.new_version, changes);
  if (report.advice.finding) {
    report.changes.push_back({{*report.advice.finding, {}, report.old_version, report.new_version}});
  }
  for (DiffChange& change : changes) report.changes.push_back({std::move(change)});
  return report;
}

/// Marks the accepted breaks, and says which acceptances have nothing to accept.
void accept_breaks(DiffReport& report, const DiffInputs& inputs) {
  Findings diagnostics(inputs.accept_file.shown_path);
  for (const AcceptedBreak& acceptance : inputs.accepted) {
    bool is_used = false;
    for (ReportedChange& reported : report.changes) {
      if (!acceptance.matches(reported.change)) continue;
      is_used = true;
      if (reported.accepted == nullptr) reported.accepted = &acceptance;
    }
    if (is_used) continue;
    diagnostics.warning(acceptance.position, qzlog_compiler::Rule::kUnusedAccept,
                        "no such break: '" + std::string(rule_name(acceptance.rule)) + "'");
  }
  report.findings = diagnostics.take_sorted();
  print_findings(report.findings, inputs.accept_file.shown_path, inputs.accept_file.content);
}

int run(const DiffOptions& options) {
  DiffInputs inputs;
  read_inputs(options, inputs);
  DiffReport report = make_report(inputs);
  report.old_name = options.old_input;
  report.new_name = options.new_input;
  accept_breaks(report, inputs);
  if (options.json) {
    std::cout << json_result_text(to_json(report));
  } else {
    print_diff(std::cout, report, stdout_has_colour());
  }
  return report.break_count() == 0 ? kExitSuccess : kExitFindings;
}

}  // namespace

void add_diff_command(CLI::App& app, int& exit_status) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App* const command = app.add_subcommand("diff", "Compare two versions of definitions: whom each change breaks");
  command->add_option("OLD", options->old_input, "The older definitions")->required();
  command->add_option("NEW", options->new_input, "The newer definitions")->required();
  command->add_option("--accept", options->accept, "YAML list of breaks that are meant, each with its reason")
      ->type_name("FILE");
  command
      ->add_option("--aux", options->aux,
                   "Auxiliary definitions that extend OLD: say whether they extend NEW too; may be repeated")
      ->type_name("FILE")
      ->allow_extra_args(false);
  command->add_option("--aux-of", options->standard, "OLD and NEW are auxiliary sources that extend these definitions")
      ->type_name("FILE");
  add_message_path_option(*command, options->path, "Rendering path that the texts of sources are stored for");
  command->add_flag("--json", options->json, "Print the result as JSON");
  command->footer(kDiffFooter);
  command->callback([options, &exit_status] { exit_status = run(*options); });
}

}  // namespace qzlog_tool
