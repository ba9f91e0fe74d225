#ifndef QZLOG_TOOLS_REPORT_CHECK_RULES_H
#define QZLOG_TOOLS_REPORT_CHECK_RULES_H

#include <span>

#include "tools/report/rule_table.h"
#include "tools/report/source_rules.h"

namespace qzlog_tool {

/// What `qzlog check` finds beside what the compiler has a rule for.
enum class CheckRule {
  kRefusedFile,
  kRefusedRecord,
  kRefusedEntryId,
  kRefusedAttribute,
  kRefusedSelectorAttribute,
  kRefusedSelectorMessage,
  kRejectedPattern,
  kLostText,
  kBadBundle,
  kNoRootBundle,
  kMissingMessage,
  kUnusedMessage,
  kReferenceLost,
  kReferenceAdded,
  kReferenceFormat,
  kUnchangedText,
  kStaleCatalog,
  kSyslogName,
};

/// All rules, in the order of `CheckRule`.
std::span<const qzlog_compiler::RuleInfo> all_check_rules();

const qzlog_compiler::RuleInfo& rule_info(CheckRule rule);

/// The compiler's rules that a check reports by itself, apart from the warnings about whole models.
std::span<const qzlog_compiler::Rule> shared_check_rules();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_CHECK_RULES_H
