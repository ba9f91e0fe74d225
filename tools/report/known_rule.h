#ifndef QZLOG_TOOLS_REPORT_KNOWN_RULE_H
#define QZLOG_TOOLS_REPORT_KNOWN_RULE_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/report/finding.h"
#include "tools/report/rule_table.h"

namespace qzlog_compiler {

/// A rule of any table, with what its table says of all that stand in it. Texts live as long as the program.
struct KnownRule {
  const RuleInfo* info;
  std::string_view table;     ///< as `qzlog_command_docs --rules` calls it
  std::string_view about;     ///< what the findings are of: "definition sources"
  Severity usual_severity;    ///< where no example shows another
  std::string_view accepted;  ///< how to accept it, with RULE for its name; empty where nobody may
  std::vector<std::pair<std::string_view, std::string>> details = {};  ///< "version_step", "minor"
};

/// Gives all rules to a subcommand, which knows nothing of the others whose rules are among them.
using RuleList = std::vector<KnownRule> (*)();

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_KNOWN_RULE_H
