#include "tools/manual/command_tree.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>

namespace qzlog_tool {

namespace {

constexpr const char* kUntypedValue = "TEXT";

std::string main_name(const CLI::Option& option) {
  if (!option.get_lnames().empty()) return "--" + option.get_lnames().front();
  return option.get_snames().empty() ? option.get_name() : "-" + option.get_snames().front();
}

std::vector<std::string> names_of(const CLI::Option& option) {
  if (option.get_positional()) return {option.get_name(true)};
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

std::vector<std::string> names_of(const std::set<CLI::Option*>& options) {
  std::vector<std::string> names;
  names.reserve(options.size());
  for (const CLI::Option* const option : options) names.push_back(main_name(*option));
  std::sort(names.begin(), names.end());  // the set is in the order of addresses
  return names;
}

/// The parser puts what it checks behind the value's own name: "TEXT:{icu,narrow}".
std::string value_name(const CLI::Option& option) {
  if (option.get_items_expected_max() == 0) return "";
  const std::string name = option.get_type_name();
  const std::string untyped = std::string(kUntypedValue) + ":";
  if (name.rfind(untyped, 0) == 0) return name.substr(untyped.size());
  return name.empty() || (name == kUntypedValue && option.get_positional()) ? option.get_name(true) : name;
}

CommandOption read_option(const CLI::Option& option) {
  CommandOption result;
  result.names = names_of(option);
  result.positional = option.get_positional();
  result.value_name = value_name(option);
  result.value = value_kind(result.value_name);
  result.description = option.get_description();
  result.default_value = option.get_default_str();
  result.required = option.get_required();
  result.repeatable = option.get_expected_max() > 1;
  result.several_values = result.repeatable && option.get_allow_extra_args();
  result.needs = names_of(option.get_needs());
  result.excludes = names_of(option.get_excludes());
  return result;
}

CommandNode read_node(const CLI::App& app, const std::string& name) {
  CommandNode node{name, app.get_description(), app.get_footer(), {}, {}, {}};
  for (const CLI::Option* const option : app.get_options({})) {
    if (option->get_group().empty()) continue;  // hidden
    (option->get_positional() ? node.positionals : node.options).push_back(read_option(*option));
  }
  for (const CLI::App* const subcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (subcommand->get_group().empty()) continue;
    node.subcommands.push_back(read_node(*subcommand, name + " " + subcommand->get_name()));
  }
  return node;
}

void append(const CommandNode& node, std::vector<const CommandNode*>& list) {
  list.push_back(&node);
  for (const CommandNode& subcommand : node.subcommands) append(subcommand, list);
}

}  // namespace

CommandNode read_command_tree(const CLI::App& app) { return read_node(app, app.get_name()); }

std::vector<const CommandNode*> all_commands(const CommandNode& root) {
  std::vector<const CommandNode*> list;
  append(root, list);
  return list;
}

}  // namespace qzlog_tool
