#include "tools/manual/bash_completion.h"

#include <sstream>
#include <vector>

#include "tools/manual/shell_quoting.h"

namespace qzlog_tool {

namespace {

constexpr const char* kHelpers = R"shell(# Completion of qzlog for bash.

_qzlog_words() { # WORDS CURRENT
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

_qzlog_folders() { # CURRENT
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -d -- "$1")
}

_qzlog_files() { # CURRENT SUFFIX...: folders, and files with one of the suffixes; without any, all files
  local file suffix current=$1
  shift
  compopt -o filenames 2>/dev/null
  COMPREPLY=()
  while IFS= read -r file; do
    if [[ -d $file || $# -eq 0 ]]; then
      COMPREPLY+=("$file")
      continue
    fi
    for suffix in "$@"; do
      if [[ $file == *"$suffix" ]]; then COMPREPLY+=("$file"); fi
    done
  done < <(compgen -f -- "$current")
}

# Of the definitions that the line names before the cursor; a standard stream is left to the command.
_qzlog_names() { # events|attributes|explained (events, or rules where the line names no definitions)
  local files=() i
  for ((i = 1; i < COMP_CWORD - 1; ++i)); do
    [[ ${COMP_WORDS[i]} == --definitions || ${COMP_WORDS[i]} == --aux ]] || continue
    if [[ ${COMP_WORDS[i + 1]} == '=' ]]; then ((++i)); fi
    if [[ ${COMP_WORDS[i + 1]} != - ]]; then files+=("${COMP_WORDS[i + 1]/#\~/$HOME}"); fi
  done
  if ((${#files[@]})) || [[ $1 == explained ]]; then qzlog complete "$1" "${files[@]}" 2>/dev/null; fi
}

_qzlog_expression() { # CURRENT: the attribute at its end
  local current=${1#[\"\']} beginning
  beginning=${current%"${current##*[ (]}"}
  mapfile -t COMPREPLY < <(compgen -P "$beginning" -W "$(_qzlog_names attributes)" -- "${current#"$beginning"}")
}

)shell";

// What was typed is walked to find the command and the option whose value stands at the cursor. bash makes a word of
// the "=" between an option and its value. A word after an option is its value even if it is the "-" for a standard
// stream. Behind a value of an option that takes several, the next one or an argument of the command may follow.
constexpr const char* kMain = R"(
_qzlog() {
  local current=${COMP_WORDS[COMP_CWORD]} command=qzlog option='' further='' number=1 ended='' word i
  local subcommands options valued several offered
  COMPREPLY=()
  _qzlog_command "$command"
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    if [[ $option && $word != -?* ]]; then
      if [[ $word == '=' ]]; then continue; fi
      further=1
      if [[ " $several " != *" $option "* ]]; then option=''; fi
      continue
    fi
    option='' further=''
    if [[ $word == -- && ! $ended ]]; then
      ended=1
    elif [[ $word == -?* && ! $ended ]]; then
      if [[ " $valued " == *" $word "* ]]; then option=$word; fi
    elif [[ " $subcommands " == *" $word "* ]]; then
      command+=" $word"
      _qzlog_command "$command"
    else
      ((++number))
    fi
  done
  if [[ $current == - && " $several " == *" $option "* ]]; then option=''; fi
  if [[ $option && $current != -?* ]]; then
    if [[ $current == '=' ]]; then current=''; fi
    if [[ $further ]]; then _qzlog_value "$command $number" "$current"; fi
    offered=("${COMPREPLY[@]}")
    _qzlog_value "$command $option" "$current"
    COMPREPLY+=("${offered[@]}")
  elif [[ $current == -* && ! $ended ]]; then
    _qzlog_words "$options" "$current"
  elif [[ $subcommands ]]; then
    _qzlog_words "$subcommands" "$current"
  else
    _qzlog_value "$command $number" "$current"
  fi
}

complete -F _qzlog qzlog
)";

std::string action(const ValueKind& value) {
  switch (value.type) {
    case ValueKind::Type::kChoice:
      return "_qzlog_words " + shell_quoted(joined(value.items, " ")) + " \"$2\"";
    case ValueKind::Type::kFolder:
      return "_qzlog_folders \"$2\"";
    case ValueKind::Type::kFile:
      return "_qzlog_files \"$2\"" + (value.items.empty() ? "" : " " + joined(value.items, " "));
    case ValueKind::Type::kEvent:
      return "_qzlog_words \"$(_qzlog_names events)\" \"$2\"";
    case ValueKind::Type::kExplained:
      return "_qzlog_words \"$(_qzlog_names explained)\" \"$2\"";
    case ValueKind::Type::kExpression:
      return "_qzlog_expression \"$2\"";
    default:
      return "";
  }
}

void write_command(const CommandNode& command, std::ostringstream& out) {
  std::vector<std::string> subcommands;
  std::vector<std::string> options;
  std::vector<std::string> valued;
  std::vector<std::string> several;
  for (const CommandNode& subcommand : command.subcommands) subcommands.push_back(subcommand.last_name());
  for (const CommandOption& option : command.options) {
    options.insert(options.end(), option.names.begin(), option.names.end());
    if (option.takes_value()) valued.insert(valued.end(), option.names.begin(), option.names.end());
    if (option.several_values) several.insert(several.end(), option.names.begin(), option.names.end());
  }
  out << "    " << shell_quoted(command.name) << ")\n"
      << "      subcommands=" << shell_quoted(joined(subcommands, " ")) << "\n"
      << "      options=" << shell_quoted(joined(options, " ")) << "\n"
      << "      valued=" << shell_quoted(joined(valued, " ")) << "\n"
      << "      several=" << shell_quoted(joined(several, " ")) << "\n      ;;\n";
}

void write_value(const std::vector<std::string>& patterns, const CommandOption& option, std::ostringstream& out) {
  if (option.value.type == ValueKind::Type::kText) return;
  out << "    " << joined(patterns, " | ") << ") " << action(option.value) << " ;;\n";
}

void write_values(const CommandNode& command, std::ostringstream& out) {
  for (const CommandOption& option : command.options) {
    std::vector<std::string> patterns;
    for (const std::string& name : option.names) patterns.push_back(shell_quoted(command.name + " " + name));
    write_value(patterns, option, out);
  }
  std::size_t number = 0;
  for (const CommandOption& positional : command.positionals) {
    ++number;
    const std::string pattern = shell_quoted(command.name + " " + std::to_string(number));
    write_value({positional.repeatable ? shell_quoted(command.name + " ") + "[0-9]*" : pattern}, positional, out);
  }
}

}  // namespace

std::string bash_completion(const CommandNode& root) {
  std::ostringstream out;
  out << kHelpers;
  out << "_qzlog_command() { # COMMAND: sets its subcommands, its options, and those that take a value or several "
         "values\n  case $1 in\n";
  for (const CommandNode* const command : all_commands(root)) write_command(*command, out);
  out << "  esac\n}\n\n";
  out << "_qzlog_value() { # COMMAND OPTION|NUMBER (one word) CURRENT\n  case $1 in\n";
  for (const CommandNode* const command : all_commands(root)) write_values(*command, out);
  out << "  esac\n}\n" << kMain;
  return out.str();
}

}  // namespace qzlog_tool
