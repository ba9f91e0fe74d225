#ifndef QZLOG_TOOLS_MANUAL_COMMAND_TREE_H
#define QZLOG_TOOLS_MANUAL_COMMAND_TREE_H

#include <string>
#include <vector>

#include "tools/options/value_kind.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// An option, or an argument that is given by its position.
struct CommandOption {
  std::vector<std::string> names;  ///< "-o", "--output"; of a positional argument just "SRC"
  bool positional = false;
  std::string value_name;  ///< "OUT.ldf"; empty for flags
  ValueKind value;
  std::string description;
  std::string default_value;
  bool required = false;
  bool repeatable = false;
  bool several_values = false;        ///< each time that it is given
  std::vector<std::string> needs;     ///< names of other options
  std::vector<std::string> excludes;  ///< names of other options

  bool takes_value() const { return !value_name.empty(); }
};

/// A command with all that its help page tells.
struct CommandNode {
  std::string name;  ///< with the commands before it: "qzlog count show"
  std::string description;
  std::string footer;
  std::vector<CommandOption> options;
  std::vector<CommandOption> positionals;
  std::vector<CommandNode> subcommands;

  std::string last_name() const { return name.substr(name.rfind(' ') + 1); }
};

/// Everything that a command line takes.
CommandNode read_command_tree(const CLI::App& app);

/// The node and all below it, each before its subcommands. They live as long as the root.
std::vector<const CommandNode*> all_commands(const CommandNode& root);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_COMMAND_TREE_H
