#ifndef QZLOG_TOOLS_EXPLAIN_RULE_EXAMPLES_H
#define QZLOG_TOOLS_EXPLAIN_RULE_EXAMPLES_H

#include <span>
#include <string_view>

#include "tools/report/finding.h"

namespace qzlog_tool {

/// What the command prints of a rule: a finding, with the line that it is about and the hint where it has them.
struct RuleExample {
  std::string_view table;  ///< with the next, that of qzlog_compiler::KnownRule
  std::string_view rule;
  qzlog_compiler::Severity severity;
  std::string_view text;  ///< lines, the last one without its end
};

/// Of each rule that the tests or the documentation show at most one error and one warning, the error first.
std::span<const RuleExample> all_rule_examples();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_EXPLAIN_RULE_EXAMPLES_H
