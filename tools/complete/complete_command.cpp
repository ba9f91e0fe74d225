#include "tools/complete/complete_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tools/choice/known_definitions.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/definitions/definition_file.h"
#include "tools/definitions/definitions.h"
#include "tools/report/passed_over.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

struct CompleteOptions {
  std::string kind;
  std::vector<std::string> definitions;
};

// Shells take what is printed apart at its blanks, and complete no names that they would have to quote.
bool is_one_word(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' ||
           c == '-' || static_cast<unsigned char>(c) >= 0x80;
  });
}

// What `qzlog explain` takes: with definitions an event, without any a rule.
constexpr const char* kExplained = "explained";

int complete_rules(const std::vector<qzlog_compiler::KnownRule>& rules) {
  std::set<std::string_view> names;
  for (const qzlog_compiler::KnownRule& rule : rules) names.insert(rule.info->name);
  for (const std::string_view name : names) std::cout << name << '\n';
  return kExitSuccess;
}

// An auxiliary file is read for itself: what is wrong between two is no matter here, nor is what is wrong within one.
int complete(const CompleteOptions& options) {
  KnownDefinitions known;
  for (const std::string& path : options.definitions) {
    known.add(read_errors_only(read_definition_file(path), {}).model);
  }
  passed_over().clear();  // a shell shows what is said here between the words of a command line
  for (const std::string_view name : options.kind == "attributes" ? known.attribute_names() : known.event_names()) {
    if (is_one_word(name) && qzlog_compiler::is_utf8(name)) std::cout << name << '\n';
  }
  return kExitSuccess;
}

}  // namespace

void add_complete_command(CLI::App& app, int& exit_status, qzlog_compiler::RuleList rules) {
  CLI::App* const command = app.add_subcommand("complete", "The names that definitions have, for completions");
  command->group("");
  const auto options = std::make_shared<CompleteOptions>();
  command->add_option("KIND", options->kind)->required()->check(CLI::IsMember({"events", "attributes", kExplained}));
  command->add_option("DEFINITIONS", options->definitions);
  command->callback([options, rules, &exit_status] {
    const bool of_rules = options->kind == kExplained && options->definitions.empty();
    exit_status = of_rules ? complete_rules(rules()) : complete(*options);
  });
}

}  // namespace qzlog_tool
