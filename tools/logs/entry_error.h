#ifndef QZLOG_TOOLS_LOGS_ENTRY_ERROR_H
#define QZLOG_TOOLS_LOGS_ENTRY_ERROR_H

#include <cstddef>
#include <iterator>
#include <span>
#include <string>

#include "lines/line_rule.h"
#include "tools/report/rule_table.h"

namespace qzlog_tool {

/// What can be wrong with one line of entries: first what the library's reader finds (qzlog::LineRule), then what
/// rendering and looking for gaps do.
enum class EntryRule : std::size_t {
  kNoMessage = std::size(qzlog::kLineRuleNames),
  kBrokenPattern,
  kUncountableDate,
  kMissingLines,
  kDoubledLine,
};

constexpr EntryRule entry_rule(qzlog::LineRule rule) { return static_cast<EntryRule>(rule); }

/// All rules, in the order of `EntryRule`.
std::span<const qzlog_compiler::RuleInfo> all_entry_rules();

const qzlog_compiler::RuleInfo& rule_info(EntryRule rule);

/// Thrown for an entry that cannot be rendered; the others still are.
struct EntryError {
  EntryRule rule;
  std::string text;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_ENTRY_ERROR_H
