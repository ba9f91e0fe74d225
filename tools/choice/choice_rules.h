#ifndef QZLOG_TOOLS_CHOICE_CHOICE_RULES_H
#define QZLOG_TOOLS_CHOICE_CHOICE_RULES_H

#include <span>

#include "tools/report/rule_table.h"

namespace qzlog_tool {

/// What can be wrong with an expression that chooses entries.
enum class ChoiceRule {
  kBadExpression,
  kLargeExpression,
  kBadValue,
  kUndefinedAttribute,
  kUndefinedEvent,
  kUnknownField,
  kNoSuchComparison,
  kValueRange,
};

/// All rules, in the order of `ChoiceRule`.
std::span<const qzlog_compiler::RuleInfo> all_choice_rules();

const qzlog_compiler::RuleInfo& rule_info(ChoiceRule rule);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_CHOICE_RULES_H
