#ifndef QZLOG_TOOLS_KNOWN_RULES_H
#define QZLOG_TOOLS_KNOWN_RULES_H

#include <vector>

#include "tools/report/known_rule.h"

namespace qzlog_tool {

/// The rules of all tables, one table behind the other.
std::vector<qzlog_compiler::KnownRule> all_known_rules();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_KNOWN_RULES_H
