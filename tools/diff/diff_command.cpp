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

#include "tools/definitions/definition_input.h"
#include "tools/definitions/definition_revision.h"
#include "tools/diff/aux_collision.h"
#include "tools/diff/diff_accept.h"
#include "tools/diff/diff_report.h"
#include "tools/diff/model_diff.h"
#include "tools/diff/version_advice.h"
#include "tools/report/finding_json.h"
#include "tools/report/finding_printer.h"
#include "tools/report/source_rules.h"
#include "tools/system/command_error.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::AcceptedBreak;
using qzlog_compiler::AuxFile;
using qzlog_compiler::CompileOptions;
using qzlog_compiler::CompileResult;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::DiffChange;
using qzlog_compiler::Finding;
using qzlog_compiler::Findings;
using qzlog_compiler::MessagePath;

constexpr const char* kDiffFooter =
    R"(OLD and NEW, and what --aux and --aux-of name, are definition sources, compiled files or git:REV:PATH, as in
git:HEAD:storage.yaml; - is standard input. Compiled files know neither the names and summaries of entries nor
how a text was written, so these are compared between two sources only.

Exit status: 0 no break, or every one accepted; 1 breaks; 2 wrong usage, a file that cannot be read, or one with errors.

Examples:
  qzlog diff storage-2.5.ldf storage.yaml
  qzlog diff git:v2.5:storage.yaml storage.yaml --accept breaks.yaml
  qzlog diff git:HEAD:./storage.yaml storage.yaml --aux site.ldf --json)";

struct DiffArguments {
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
  CompileOptions options;
  CompileResult standard;
  CompileResult old_definitions;
  CompileResult new_definitions;
  std::vector<AuxFile> aux;
  DefinitionRevision accept_file;
  std::vector<AcceptedBreak> accepted;
};

/// Prints what was found; what has errors cannot be compared.
void refuse_errors(const std::vector<Finding>& diagnostics, const std::string& file, std::string_view text) {
  print_findings(diagnostics, file, text);
  if (qzlog_compiler::has_errors(diagnostics)) throw CommandError(kExitCannotRun, "");
}

CompileResult load(const std::string& argument, const CompileOptions& options) {
  const DefinitionRevision input = read_definition_revision(argument);
  CompileResult result = load_definition_revision(input, options);
  refuse_errors(result.diagnostics, input.name, input.content);
  return result;
}

AuxFile load_aux(const std::string& argument, const DefinitionModel& old_model, MessagePath path) {
  DefinitionRevision input = read_definition_revision(argument);
  AuxFile aux{std::move(input.content), std::move(input.name)};
  refuse_errors(qzlog_compiler::check_aux_file(aux, old_model, path).diagnostics, aux.name, aux.content);
  return aux;
}

std::vector<AcceptedBreak> load_accepted(const DefinitionRevision& input) {
  Findings diagnostics(input.name);
  std::vector<AcceptedBreak> accepted = qzlog_compiler::load_accepted_breaks(input.content, diagnostics);
  refuse_errors(diagnostics.take_sorted(), input.name, input.content);
  return accepted;
}

void refuse_two_standard_inputs(const DiffArguments& arguments) {
  std::vector<std::string> inputs = arguments.aux;
  inputs.insert(inputs.end(), {arguments.old_input, arguments.new_input, arguments.standard, arguments.accept});
  if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
    throw CommandError(kExitCannotRun, "standard input can be read for one file only");
  }
}

/// Fills `inputs`, whose options point into it.
void read_inputs(const DiffArguments& arguments, DiffInputs& inputs) {
  refuse_two_standard_inputs(arguments);
  inputs.options.path = message_path_of(arguments.path);
  if (!arguments.standard.empty()) {
    inputs.standard = load(arguments.standard, inputs.options);
    inputs.options.standard = &inputs.standard.model;
  }
  inputs.old_definitions = load(arguments.old_input, inputs.options);
  inputs.new_definitions = load(arguments.new_input, inputs.options);
  for (const std::string& aux : arguments.aux) {
    inputs.aux.push_back(load_aux(aux, inputs.old_definitions.model, inputs.options.path));
  }
  if (arguments.accept.empty()) return;
  inputs.accept_file = read_definition_revision(arguments.accept);
  inputs.accepted = load_accepted(inputs.accept_file);
}

/// The changes of the models and the collisions, each of these behind the other changes of its entry.
std::vector<DiffChange> find_changes(const DiffInputs& inputs) {
  std::vector<DiffChange> changes =
      qzlog_compiler::compare_models(inputs.old_definitions.model, inputs.new_definitions.model);
  const DefinitionModel& new_model = inputs.new_definitions.model;
  for (const AuxFile& aux : inputs.aux) {
    std::vector<DiffChange> collisions = qzlog_compiler::find_aux_collisions(aux, new_model, inputs.options.path);
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
  Findings diagnostics(inputs.accept_file.name);
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
  print_findings(report.findings, inputs.accept_file.name, inputs.accept_file.content);
}

int run(const DiffArguments& arguments) {
  DiffInputs inputs;
  read_inputs(arguments, inputs);
  DiffReport report = make_report(inputs);
  report.old_name = arguments.old_input;
  report.new_name = arguments.new_input;
  accept_breaks(report, inputs);
  if (arguments.json) {
    std::cout << json_result_text(to_json(report));
  } else {
    print_diff(std::cout, report, stdout_has_colour());
  }
  return report.break_count() == 0 ? kExitSuccess : kExitFindings;
}

}  // namespace

void add_diff_command(CLI::App& app, int& exit_status) {
  const auto arguments = std::make_shared<DiffArguments>();
  CLI::App* const command = app.add_subcommand("diff", "Compare two versions of definitions: whom each change breaks");
  command->add_option("OLD", arguments->old_input, "The older definitions")->required();
  command->add_option("NEW", arguments->new_input, "The newer definitions")->required();
  command->add_option("--accept", arguments->accept, "YAML list of breaks that are meant, each with its reason")
      ->type_name("FILE");
  command
      ->add_option("--aux", arguments->aux,
                   "Auxiliary definitions that extend OLD: say whether they extend NEW too; may be repeated")
      ->type_name("FILE")
      ->allow_extra_args(false);
  command
      ->add_option("--aux-of", arguments->standard, "OLD and NEW are auxiliary sources that extend these definitions")
      ->type_name("FILE");
  command->add_option("--path", arguments->path, "Rendering path that the texts of sources are stored for")
      ->check(CLI::IsMember({"icu", "narrow", "both"}).description(""))
      ->type_name("icu|narrow|both")
      ->capture_default_str();
  command->add_flag("--json", arguments->json, "Print the result as JSON");
  command->footer(kDiffFooter);
  command->callback([arguments, &exit_status] { exit_status = run(*arguments); });
}

}  // namespace qzlog_tool
