#include "tools/compile/dependency_file.h"

#include "tools/compiler/text/utf8_text.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

/// Backslashes mean themselves except before a blank: there each of them is doubled.
void append_escaped(std::string& rule, char character, std::size_t backslashes_before) {
  if (character == '$') rule += '$';
  if (character == ' ' || character == '\t') rule.append(backslashes_before + 1, '\\');
  if (character == '#' || character == ':') rule += '\\';
  rule += character;
}

std::string escaped(std::string_view name) {
  if (name.find_first_of("\r\n") != std::string_view::npos) {
    throw CommandError(kExitCannotRun, "a dependency file cannot hold " + qzlog_compiler::quoted(name));
  }
  std::string rule;
  std::size_t backslashes = 0;
  for (const char character : name) {
    append_escaped(rule, character, backslashes);
    backslashes = character == '\\' ? backslashes + 1 : 0;
  }
  return rule;
}

}  // namespace

std::string dependency_rule(std::string_view target, const std::vector<std::string>& inputs) {
  std::string rule = escaped(target) + ":";
  for (const std::string& input : inputs) rule += " \\\n  " + escaped(input);
  return rule + "\n";
}

}  // namespace qzlog_tool
