#ifndef QZLOG_TOOLS_INSPECT_INSPECT_RULES_H
#define QZLOG_TOOLS_INSPECT_INSPECT_RULES_H

#include <span>

#include "tools/report/rule_table.h"

namespace qzlog_tool {

/// What `qzlog inspect` finds beside damage, which the compiler has a rule for.
enum class InspectRule { kNoYamlForm };

/// All rules, in the order of `InspectRule`.
std::span<const qzlog_compiler::RuleInfo> all_inspect_rules();

const qzlog_compiler::RuleInfo& rule_info(InspectRule rule);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_INSPECT_INSPECT_RULES_H
