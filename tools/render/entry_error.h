#ifndef QZLOG_TOOLS_RENDER_ENTRY_ERROR_H
#define QZLOG_TOOLS_RENDER_ENTRY_ERROR_H

#include <span>
#include <string>

#include "tools/report/rule_table.h"

namespace qzlog_tool {

/// What can be wrong with one line of entries.
enum class EntryRule {
  kLongLine,
  kTornLine,
  kBadJson,
  kNotAnObject,
  kUnknownKey,
  kDuplicateKey,
  kMissingId,
  kBadId,
  kUnknownId,
  kUnknownName,
  kBadDefinitionFile,
  kBadLevel,
  kBadTime,
  kTimeGlobals,
  kBadChoice,
  kBadEnvelope,
  kBadLost,
  kBadAttributes,
  kUnknownAttribute,
  kDuplicateAttribute,
  kUnsupportedType,
  kWrongKind,
  kOutOfRange,
  kNulCharacter,
  kBadBytes,
  kRefusedValue,
  kNoMessage,
  kBrokenPattern,
  kUncountableDate,
  kMissingLines,
  kDoubledLine,
  kOutOfMemory,
};

/// All rules, in the order of `EntryRule`.
std::span<const qzlog_compiler::RuleInfo> all_entry_rules();

const qzlog_compiler::RuleInfo& rule_info(EntryRule rule);

/// Thrown for an entry that cannot be rendered; the others still are.
struct EntryError {
  EntryRule rule;
  std::string text;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_ENTRY_ERROR_H
