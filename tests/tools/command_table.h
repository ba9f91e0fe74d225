#ifndef QZLOG_TESTS_TOOLS_COMMAND_TABLE_H
#define QZLOG_TESTS_TOOLS_COMMAND_TABLE_H

#include <set>
#include <string>

#include "tools/command_line.h"

namespace qzlog_test {

/// "qzlog", "qzlog compile", "qzlog count", "qzlog count show", ...
inline std::set<std::string> command_names() {
  const qzlog_tool::CommandNode root = qzlog_tool::command_line_tree();
  std::set<std::string> names;
  for (const qzlog_tool::CommandNode* const command : qzlog_tool::all_commands(root)) names.insert(command->name);
  return names;
}

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_COMMAND_TABLE_H
