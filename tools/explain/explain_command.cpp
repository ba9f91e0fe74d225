#include "tools/explain/explain_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/definitions/definitions.h"
#include "tools/definitions/entry_view.h"
#include "tools/explain/entry_explanation.h"
#include "tools/explain/entry_search.h"
#include "tools/explain/rule_explanation.h"
#include "tools/options/option_checks.h"
#include "tools/options/raw_option.h"
#include "tools/system/command_error.h"
#include "tools/system/standard_input.h"
#include "tools/templates/message_catalog.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::RuleList;

struct ExplainOptions {
  std::string entry;
  std::string definitions;
  std::string auxiliary;
  std::string catalog;
  std::string locale;
  bool json = false;
};

constexpr const char* kExplainFooter =
    R"(Without --definitions, what is to be explained is a rule: the name in brackets at the end of a diagnostic.

An entry is shown as the library has it: an entry that both files define with the attributes and messages of both.
Messages read as their readers see them, with {Name} where the value of an attribute comes, or {Name:F} where its format F
does not follow from its type. A file that was compiled with --strip has no names and summaries, and knows its entries by ID.

Exit status: 0 success, 1 no such entry or rule, or bad definitions, 2 wrong usage or a file that cannot be read.

Examples:
  qzlog explain 1001 --definitions storage.ldf
  qzlog explain 0x3E9 --definitions storage.yaml --aux site.yaml
  qzlog explain DISK_FULL --definitions storage.ldf --catalog messages
  qzlog explain DISK_FULL --definitions d.yaml --catalog messages --locale de_DE
  qzlog explain unused-attribute
)";

Definitions read_for_readers(const std::string& path, const Definitions* standard) {
  return read_without_errors(read_definition_file(path),
                             {.standard = standard, .path = qzlog_compiler::RenderingPaths::kIcu}, kExitFindings);
}

/// The bundle that readers of a locale get: its own, that of its language, or the root.
CatalogBundle bundle_for(std::vector<CatalogBundle> bundles, const std::string& locale) {
  std::string wanted = locale;
  std::replace(wanted.begin(), wanted.end(), '-', '_');
  for (;;) {
    const auto found = std::find_if(bundles.begin(), bundles.end(),
                                    [&](const CatalogBundle& bundle) { return bundle.locale == wanted; });
    if (found != bundles.end()) return std::move(*found);
    if (wanted == "root") break;
    const std::size_t end = wanted.rfind('_');
    wanted = end == std::string::npos ? "root" : wanted.substr(0, end);
  }
  throw CommandError(kExitCannotRun, "the catalog has nothing for the locale '" + locale + "'");
}

std::vector<CatalogBundle> languages_of(const ExplainOptions& options) {
  if (options.catalog.empty()) return {};
  std::vector<CatalogBundle> bundles = read_catalog(options.catalog);
  if (options.locale.empty()) return bundles;
  return {bundle_for(std::move(bundles), options.locale)};
}

int explain_rule(const ExplainOptions& options, RuleList rules) {
  if (!reads_as_rule(options.entry)) throw CLI::RequiredError("--definitions");
  const std::vector<qzlog_compiler::KnownRule> found = require_known_rules(options.entry, rules());
  if (options.json) {
    print_rule_explanation_json(std::cout, found);
  } else {
    print_rule_explanation(std::cout, found);
  }
  return kExitSuccess;
}

std::uint32_t find_entry(const std::string& text, const DefinitionPair& definitions, RuleList rules) {
  try {
    return find_entry_id(text, definitions);
  } catch (const CommandError& error) {
    if (find_known_rules(text, rules()).empty()) throw;
    throw CommandError(error.exit_status(),
                       std::string(error.what()) + "\n  hint: a rule is explained without --definitions");
  }
}

int explain_entry(const ExplainOptions& options, RuleList rules) {
  refuse_repeated_standard_input({options.definitions, options.auxiliary});
  const Definitions standard = read_for_readers(options.definitions, nullptr);
  std::optional<Definitions> auxiliary;
  if (!options.auxiliary.empty()) auxiliary = read_for_readers(options.auxiliary, &standard);
  const DefinitionPair definitions(standard.model, auxiliary ? &auxiliary->model : nullptr);
  const std::uint32_t id = find_entry(options.entry, definitions, rules);
  const std::optional<EntryExplanation> explanation = qzlog_tool::explain_entry(id, definitions, languages_of(options));
  if (options.json) {
    print_explanation_json(std::cout, *explanation);
  } else {
    print_explanation(std::cout, *explanation);
  }
  return kExitSuccess;
}

}  // namespace

void add_explain_command(CLI::App& app, int& exit_status, RuleList rules) {
  CLI::App* const command = app.add_subcommand("explain", "Show what an entry or a diagnostic means");
  const auto options = std::make_shared<ExplainOptions>();
  command->footer(kExplainFooter);
  command
      ->add_option("ENTRY", options->entry,
                   "The entry: its ID, decimal or 0x hexadecimal, or its name; or the rule's name")
      ->type_name("ID|NAME|RULE")
      ->required();
  const auto definitions = command
                               ->add_option("--definitions", options->definitions,
                                            "The log definition file, compiled or a source; - is standard input")
                               ->type_name("STD.ldf|STD.yaml");
  command->add_option("--aux", options->auxiliary, "An auxiliary definition file, compiled or a source")
      ->type_name("AUX.ldf|AUX.yaml")
      ->needs(definitions);
  const auto catalog =
      command->add_option("--catalog", options->catalog, "A folder of ICU resource bundles with the messages")
          ->type_name("DIR")
          ->check(CLI::Validator(CLI::ExistingDirectory).description(""))
          ->needs(definitions);
  command->add_option("--locale", options->locale, "Only what readers of this locale get from the catalog")
      ->type_name("ll_CC")
      ->check(check_not_empty)
      ->needs(catalog);
  command->add_flag("--json", options->json, "Print the explanation as a JSON object");
  add_raw_option(*command);
  command->callback([options, definitions, rules, &exit_status] {
    exit_status = definitions->count() == 0 ? explain_rule(*options, rules) : explain_entry(*options, rules);
  });
}

}  // namespace qzlog_tool
