#include "tools/check/check_command.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/check/catalog_check.h"
#include "tools/check/check_report.h"
#include "tools/check/compiled_check.h"
#include "tools/check/library_check.h"
#include "tools/check/syslog_check.h"
#include "tools/configuration/config_file.h"
#include "tools/definitions/definitions.h"
#include "tools/definitions/entry_view.h"
#include "tools/definitions/message_path_option.h"
#include "tools/options/option_checks.h"
#include "tools/report/finding_json.h"
#include "tools/report/finding_printer.h"
#include "tools/system/command_error.h"
#include "tools/system/standard_input.h"
#include "tools/system/terminal.h"
#include "tools/templates/message_catalog.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Finding;
using qzlog_compiler::LineBreaks;
using qzlog_compiler::RenderingPaths;

struct CheckOptions {
  std::string standard;
  std::string auxiliary;
  std::string catalog;
  std::string config;
  std::string section;
  std::string path = "both";
  std::string source_language = "en";
  bool json = false;
  bool strict = false;
  bool errors_only = false;
};

constexpr const char* kCheckFooter =
    R"(An error is what the library refuses, in its own words, and what it takes but then fails at: a message that never comes
out, a list that it counts wrongly. A warning is what is legal and surprises a reader. With --path both, what fails on one
rendering path alone is a warning too. Sources are compiled, and the compiler's diagnostics are reported with the rest.

With --catalog every language of the catalog (LOCALE.res in DIR) is compared with the definitions: messages that it lacks
or has too many, references that it loses, adds or shows in another format, patterns that ICU refuses or misreads, texts
that nobody translated, messages that were built from another text than the definitions have now. Give the auxiliary
file too where the catalog has its messages.

With --config a configuration file is checked, with definitions or alone: values that are no number and lines that are lost
are errors, keys that are nearly one that filters ask for, and settings that let no entry pass, are warnings. Other keys
and sections are the product's own. With --section the section has to be there.

Findings go to standard output, with the line of a text that they are about, or as JSON with --json.

Exit status: 0 no errors, 1 errors (with --strict warnings too), 2 wrong usage or a file that cannot be read.

Examples:
  qzlog check storage.ldf
  qzlog check storage.ldf site.ldf --catalog messages
  qzlog check storage.ldf --path icu --errors-only
  qzlog check storage.yaml --strict --json
  qzlog check --config qzlog.conf --section storaged
)";

/// A text that findings are about.
struct CheckedText {
  std::string file;
  std::string text;
  LineBreaks breaks;
};

struct CheckResult {
  std::vector<Finding> findings;
  std::vector<CheckedText> texts;

  bool has_errors() const { return qzlog_compiler::has_errors(findings); }
  void print(std::ostream& out) const {
    FindingPrinter printer(stdout_has_colour());
    for (const CheckedText& checked : texts) printer.add_source(checked.file, checked.text, checked.breaks);
    printer.print(findings, out);
  }
};

class Check {
 public:
  explicit Check(const CheckOptions& options) : options_(options), path_(message_path_of(options.path)) {}

  CheckResult run() {
    if (!options_.standard.empty()) check_definitions();
    if (!options_.config.empty()) check_configuration();
    return std::move(result_);
  }

 private:
  void check_definitions() {
    const Definitions standard = read(options_.standard, nullptr);
    CheckReport report(standard.shown_path, result_.findings);
    const bool loaded = !standard.bytes.empty() && check_standard_with_library(standard.bytes, report);
    check_content(standard, nullptr, report);
    check_syslog_names(standard.model, nullptr, report);
    std::optional<Definitions> auxiliary;
    if (!options_.auxiliary.empty()) auxiliary = check_auxiliary(standard, loaded);
    if (!options_.catalog.empty()) check_languages(standard, auxiliary ? &*auxiliary : nullptr);
    name_entries({standard.model, auxiliary ? &auxiliary->model : nullptr});
  }

  void check_configuration() {
    ConfigFile file = read_config_file(options_.config, options_.section);
    add(file.findings);
    result_.texts.push_back({std::move(file.shown_path), std::move(file.content), LineBreaks::kLineFeed});
  }

  void add(const std::vector<Finding>& findings) {
    result_.findings.insert(result_.findings.end(), findings.begin(), findings.end());
  }

  Definitions read(const std::string& path, const Definitions* standard) {
    Definitions definitions = read_definitions(read_definition_file(path), {.standard = standard, .path = path_});
    if (!definitions.is_source) return definitions;
    add(definitions.diagnostics);
    result_.texts.push_back({definitions.shown_path, definitions.source, LineBreaks::kYaml});
    return definitions;
  }

  /// Counts that the library wraps are told one by one with the rest of the content.
  void report_damage(const Definitions& definitions) {
    if (definitions.is_source) return;
    for (const Finding& found : definitions.diagnostics) {
      if (!definitions.is_whole || !qzlog_compiler::is_error(found)) result_.findings.push_back(found);
    }
  }

  /// What a file says, apart from what the library does with it. `standard` is null for a standard file.
  void check_content(const Definitions& definitions, const Definitions* standard, CheckReport& report) {
    report_damage(definitions);
    if (definitions.is_source) return;
    check_compiled({definitions.bytes, &definitions.model}, standard != nullptr ? &standard->model : nullptr, path_,
                   report);
  }

  /// Over a standard file that is not whole, half of what could be said of an auxiliary one would be wrong.
  Definitions check_auxiliary(const Definitions& standard, bool loaded) {
    Definitions auxiliary = read(options_.auxiliary, &standard);
    CheckReport report(auxiliary.shown_path, result_.findings);
    if (loaded && !auxiliary.bytes.empty()) check_auxiliary_with_library(auxiliary.bytes, standard.bytes, report);
    if (standard.is_whole) {
      check_content(auxiliary, &standard, report);
      check_syslog_names(auxiliary.model, &standard.model, report);
    } else {
      report_damage(auxiliary);
    }
    return auxiliary;
  }

  void check_languages(const Definitions& standard, const Definitions* auxiliary) {
    const std::vector<CatalogBundle> bundles = read_catalog(options_.catalog);
    if (!standard.is_whole || (auxiliary != nullptr && !auxiliary->is_whole)) return;
    const DefinitionPair definitions(standard.model, auxiliary != nullptr ? &auxiliary->model : nullptr);
    check_catalog(bundles, options_.catalog, definitions, options_.source_language, result_.findings);
  }

  void name_entries(const DefinitionPair& definitions) {
    for (Finding& found : result_.findings) {
      if (!found.entry_id) continue;
      for (const auto* const entry :
           {definitions.find_standard(*found.entry_id), definitions.find_auxiliary(*found.entry_id)}) {
        if (entry != nullptr && found.entry_name.empty()) found.entry_name = entry->name;
      }
    }
  }

  const CheckOptions& options_;
  RenderingPaths path_;
  CheckResult result_;
};

int check(const CheckOptions& options) {
  refuse_repeated_standard_input({options.standard, options.auxiliary, options.config});
  CheckResult result = Check(options).run();
  if (options.errors_only) std::erase_if(result.findings, std::not_fn(qzlog_compiler::is_error));
  if (options.json) {
    std::cout << json_result_text(json_result(result.findings));
  } else {
    result.print(std::cout);
  }
  const bool failed = options.strict ? !result.findings.empty() : result.has_errors();
  return failed ? kExitFindings : kExitSuccess;
}

}  // namespace

void add_check_command(CLI::App& app, int& exit_status) {
  CLI::App* const command =
      app.add_subcommand("check", "Report what is refused or surprising in definitions or settings");
  const auto options = std::make_shared<CheckOptions>();
  command->footer(kCheckFooter);
  CLI::Option* const standard =
      command
          ->add_option("STD", options->standard, "The log definition file, compiled or a source; - is standard input")
          ->type_name("STD.ldf|STD.yaml")
          ->check(check_not_empty);
  command->add_option("AUX", options->auxiliary, "An auxiliary definition file over it, compiled or a source")
      ->type_name("AUX.ldf|AUX.yaml");
  command->add_option("--catalog", options->catalog, "A folder of ICU resource bundles to compare with the definitions")
      ->type_name("DIR")
      ->needs(standard)
      ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
  command
      ->add_option("--source-language", options->source_language,
                   "The language of the definitions' texts, in which a catalog may repeat them")
      ->type_name("LANGUAGE")
      ->capture_default_str()
      ->check(check_not_empty);
  CLI::Option* const config = command->add_option("--config", options->config, "A configuration file to check")
                                  ->type_name("FILE")
                                  ->check(check_not_empty);
  command->add_option("--section", options->section, "The section that the configuration file has to have")
      ->type_name("NAME")
      ->needs(config)
      ->check(check_not_empty);
  add_message_path_option(*command, options->path, "Rendering path that the texts have to come out right on");
  command->add_flag("--json", options->json, "Print the findings as JSON");
  const auto strict = command->add_flag("--strict", options->strict, "Warnings make the exit status 1 too");
  command->add_flag("--errors-only", options->errors_only, "Leave the warnings out")->excludes(strict);
  command->callback([options, &exit_status] {
    if (options->standard.empty() && options->config.empty()) throw CLI::RequiredError("STD or --config FILE");
    exit_status = check(*options);
  });
}

}  // namespace qzlog_tool
