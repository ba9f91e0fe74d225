#include "tools/manual/fish_completion.h"

#include <sstream>

#include "tools/manual/shell_quoting.h"

namespace qzlog_tool {

namespace {

// The command whose words stand before the cursor: values cannot be taken for subcommands, as a command that has
// subcommands has no options with values.
constexpr const char* kHelpers = R"shell(
function __qzlog_at --description 'Whether the words before the cursor are those of a command'
    set -l command qzlog
    for word in (commandline -opc)[2..]
        if contains -- "$command $word" $__qzlog_commands
            set command "$command $word"
        end
    end
    test "$command" = "$argv"
end

function __qzlog_after --description 'Whether the last option before the cursor is one of these'
    for word in (commandline -opc)[-1..1]
        if string match --quiet --regex -- '^-.' $word
            contains -- (string replace --regex -- '=.*' '' $word) $argv
            return
        end
    end
    return 1
end

function __qzlog_files --description 'Folders, and files with one of the suffixes'
    set -l suffixes (string escape --style=regex -- $argv | string join '|')
    set -l current (commandline -ct | string replace --regex -- '^--[^=]*=' '')
    __fish_complete_path $current | string match --regex -- ".*(?:/|$suffixes)(?:\t.*)?\$"
end

function __qzlog_names --description 'Names in the definitions that the line gives before the cursor; without any those of rules, to be explained'
    set -l words (commandline -opc)
    set -l files
    for i in (seq 2 (count $words))
        switch $words[$i]
            case --definitions --aux
                set -a files $words[(math $i + 1)]
            case '--definitions=*' '--aux=*'
                set -a files (string replace --regex -- '^[^=]*=' '' $words[$i])
        end
    end
    set files (string match --invert -- - $files)
    test -n "$files"; or test "$argv" = explained; and qzlog complete $argv $files 2>/dev/null
end

function __qzlog_expression --description 'An expression with the attribute at its end'
    set -l current (commandline -ct | string replace --regex -- '^--[^=]*=' '' | string replace --regex -- '^["\']' '')
    set -l beginning (string replace --regex -- '[^ (]*$' '' "$current")
    for name in (__qzlog_names attributes)
        echo "$beginning$name"
    end
end

complete -c qzlog -f
)shell";

std::string quoted(std::string_view text) { return "'" + with_backslashes(text, "'\\") + "'"; }

std::string value_arguments(const ValueKind& value) {
  switch (value.type) {
    case ValueKind::Type::kChoice:
      return " -a " + quoted(joined(value.items, " "));
    case ValueKind::Type::kFolder:
      return " -a '(__fish_complete_directories (commandline -ct))'";
    case ValueKind::Type::kFile:
      return value.items.empty() ? " -F" : " -a '(__qzlog_files " + joined(value.items, " ") + ")'";
    case ValueKind::Type::kEvent:
      return " -a '(__qzlog_names events)'";
    case ValueKind::Type::kExplained:
      return " -a '(__qzlog_names explained)'";
    case ValueKind::Type::kExpression:
      return " -a '(__qzlog_expression)'";
    default:
      return "";
  }
}

std::string begin(const CommandNode& command) { return "complete -c qzlog -n " + quoted("__qzlog_at " + command.name); }

void write_option(const CommandNode& command, const CommandOption& option, std::ostringstream& out) {
  out << begin(command);
  for (const std::string& name : option.names) {
    out << (name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1));
  }
  if (option.takes_value()) {
    const bool any_file = option.value.type == ValueKind::Type::kFile && option.value.items.empty();
    out << (any_file ? " -r" : " -x") << value_arguments(option.value);
  }
  out << " -d " << quoted(option.description) << '\n';
}

/// What follows the first value, which fish takes for an argument of the command.
void write_further_values(const CommandNode& command, const CommandOption& option, std::ostringstream& out) {
  const std::string arguments = value_arguments(option.value);
  if (!option.several_values || arguments.empty()) return;
  const std::string condition = "__qzlog_at " + command.name + "; and __qzlog_after " + joined(option.names, " ");
  out << "complete -c qzlog -n " << quoted(condition) << arguments << '\n';
}

void write_command(const CommandNode& command, std::ostringstream& out) {
  out << "\n# " << command.name << '\n';
  for (const CommandNode& subcommand : command.subcommands) {
    out << begin(command) << " -a " << subcommand.last_name() << " -d " << quoted(subcommand.description) << '\n';
  }
  for (const CommandOption& option : command.options) {
    write_option(command, option, out);
    write_further_values(command, option, out);
  }
  for (const CommandOption& positional : command.positionals) {
    const std::string arguments = value_arguments(positional.value);
    if (!arguments.empty()) out << begin(command) << arguments << '\n';
  }
}

}  // namespace

std::string fish_completion(const CommandNode& root) {
  std::ostringstream out;
  out << "# Completion of qzlog for fish.\n\nset -g __qzlog_commands";
  for (const CommandNode* const command : all_commands(root)) out << " \\\n    " << quoted(command->name);
  out << '\n' << kHelpers;
  for (const CommandNode* const command : all_commands(root)) write_command(*command, out);
  return out.str();
}

}  // namespace qzlog_tool
