#include "tools/manual/zsh_completion.h"

#include <algorithm>
#include <sstream>

#include "tools/manual/shell_quoting.h"

namespace qzlog_tool {

namespace {

constexpr const char* kBegin = R"shell(#compdef qzlog
# Completion of qzlog for zsh.

# Where the last option before the cursor is one of these, takes all its values but the first from the line: _arguments
# knows of a first value and of one more. Before a "--", which would pass for one more, the option goes as well.
_qzlog_one_value() { # OPTION...
  local -i end=${words[(ie)--]}
  if ((end > CURRENT)); then end=CURRENT; fi
  local -i first=end-1
  while ((first > 1)) && [[ $words[first] != -?* ]]; do ((--first)); done
  ((${argv[(Ie)${words[first]%%=*}]})) || return
  if ((end == CURRENT)); then
    if [[ $words[first] != *=* ]]; then ((++first)); fi
    ((++first))
  fi
  if ((first < end)); then
    words[first,end-1]=()
    ((CURRENT -= end - first))
    compstate[restore]=  # else both are as before once this function returns
  fi
}

# Of the definitions that the line names before the cursor; a standard stream is left to the command.
_qzlog_names() { # events|attributes|explained (events, or rules where the line names no definitions)
  local -a files names
  local -i i
  for ((i = 1; i < CURRENT; ++i)); do
    case $words[i] in
      --definitions|--aux) if ((i + 1 < CURRENT)); then files+=("${(Q)words[i+1]}"); fi ;;
      --definitions=*|--aux=*) files+=("${(Q)${words[i]#*=}}") ;;
    esac
  done
  files=(${files:#-})
  ((${#files})) || [[ $1 == explained ]] || return 1
  names=(${(f)"$(qzlog complete $1 ${files/#\~/$HOME} 2>/dev/null)"})
  compadd -a names
}

_qzlog_events() { _qzlog_names events }

_qzlog_explained() { _qzlog_names explained }

_qzlog_expression() { # the attribute at its end
  compset -P '*[ (]'
  _qzlog_names attributes
}
)shell";
constexpr const char* kEnd = R"(
# Completes when it is autoloaded, and registers itself when it is sourced.
if [[ $funcstack[1] == _qzlog ]]; then
  _qzlog "$@"
else
  compdef _qzlog qzlog
fi
)";

std::string function_name(const CommandNode& command) {
  std::string name = "_" + command.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

std::string suffix_pattern(const std::vector<std::string>& suffixes) {
  return suffixes.size() == 1 ? "*" + suffixes.front() : "*(" + joined(suffixes, "|") + ")";
}

std::string action(const ValueKind& value) {
  switch (value.type) {
    case ValueKind::Type::kChoice:
      return "(" + joined(value.items, " ") + ")";
    case ValueKind::Type::kFolder:
      return "_files -/";
    case ValueKind::Type::kFile:
      return value.items.empty() ? "_files" : "_files -g \"" + suffix_pattern(value.items) + "\"";
    case ValueKind::Type::kEvent:
      return "_qzlog_events";
    case ValueKind::Type::kExplained:
      return "_qzlog_explained";
    case ValueKind::Type::kExpression:
      return "_qzlog_expression";
    default:
      return " ";  // nothing to offer, but the name of the value is shown
  }
}

std::string value_spec(const CommandOption& option) {
  return ":" + with_backslashes(option.value_name, ":\\") + ":" + action(option.value);
}

/// One argument of _arguments for each of the option's names.
void write_option(const CommandOption& option, std::ostringstream& out) {
  const bool ends = option.names.back() == "--help" || option.names.back() == "--version";
  std::vector<std::string> others = option.names;
  others.insert(others.end(), option.excludes.begin(), option.excludes.end());
  for (const std::string& name : option.names) {
    std::string spec = ends ? "(- *)" : option.repeatable ? "*" : "(" + joined(others, " ") + ")";
    spec += name;
    if (option.takes_value()) spec += name.rfind("--", 0) == 0 ? "=" : "+";
    spec += "[" + with_backslashes(option.description, "[]\\") + "]";
    if (option.takes_value()) spec += value_spec(option);
    if (option.several_values) spec += ":" + value_spec(option);  // one more, or what else can stand there
    out << " \\\n    " << shell_quoted(spec);
  }
}

void write_arguments(const CommandNode& command, std::ostringstream& out) {
  for (const CommandOption& option : command.options) write_option(option, out);
  std::size_t number = 0;
  for (const CommandOption& positional : command.positionals) {
    ++number;
    const std::string place = positional.repeatable ? "*" : std::to_string(number);
    out << " \\\n    " << shell_quoted(place + (positional.required ? "" : ":") + value_spec(positional));
  }
}

void write_several_values(const CommandNode& command, std::ostringstream& out) {
  std::vector<std::string> names;
  for (const CommandOption& option : command.options) {
    if (option.several_values) names.insert(names.end(), option.names.begin(), option.names.end());
  }
  if (!names.empty()) out << "  _qzlog_one_value " << joined(names, " ") << '\n';
}

void write_subcommands(const CommandNode& command, std::ostringstream& out) {
  out << "  case $state in\n    command)\n      commands=(\n";
  for (const CommandNode& subcommand : command.subcommands) {
    out << "        " << shell_quoted(subcommand.last_name() + ":" + subcommand.description) << '\n';
  }
  out << "      )\n      _describe command commands\n      ;;\n    argument)\n      case $words[1] in\n";
  for (const CommandNode& subcommand : command.subcommands) {
    out << "        " << subcommand.last_name() << ") " << function_name(subcommand) << " ;;\n";
  }
  out << "      esac\n      ;;\n  esac\n";
}

void write_function(const CommandNode& command, std::ostringstream& out) {
  out << '\n' << function_name(command) << "() {\n";
  if (command.subcommands.empty()) {
    write_several_values(command, out);
    out << "  _arguments -s -S";
    write_arguments(command, out);
    out << "\n}\n";
    return;
  }
  out << "  local curcontext=$curcontext state state_descr line\n  local -a commands\n  typeset -A opt_args\n";
  out << "  _arguments -C";
  write_arguments(command, out);
  out << " \\\n    '1:command:->command' \\\n    '*::argument:->argument' && return\n";
  write_subcommands(command, out);
  out << "}\n";
}

}  // namespace

std::string zsh_completion(const CommandNode& root) {
  std::ostringstream out;
  out << kBegin;
  for (const CommandNode* const command : all_commands(root)) write_function(*command, out);
  out << kEnd;
  return out.str();
}

}  // namespace qzlog_tool
