#ifndef QZLOG_TESTS_TOOLS_COMMAND_TABLE_H
#define QZLOG_TESTS_TOOLS_COMMAND_TABLE_H

#include <CLI/CLI.hpp>
#include <set>
#include <string>

#include "tools/command_tree.h"
#include "tools/commands.h"

namespace qzlog_test {

/// The command line of qzlog, read from its own table.
inline qzlog_tool::CommandNode command_table() {
  int unused_status = 0;
  CLI::App app("", "qzlog");
  qzlog_tool::add_commands(app, unused_status);
  return qzlog_tool::read_command_tree(app);
}

/// "qzlog", "qzlog compile", "qzlog count", "qzlog count show", ...
inline std::set<std::string> command_names() {
  const qzlog_tool::CommandNode root = command_table();
  std::set<std::string> names;
  for (const qzlog_tool::CommandNode* const command : qzlog_tool::all_commands(root)) names.insert(command->name);
  return names;
}

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_COMMAND_TABLE_H
