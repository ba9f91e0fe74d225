#ifndef QZLOG_TOOLS_RENDER_ENTRY_ERROR_H
#define QZLOG_TOOLS_RENDER_ENTRY_ERROR_H

#include <span>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// What can be wrong with one line of entries. The names that users see are in `all_entry_rules()`; they never change.
enum class EntryRule {
  kLongLine,
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
  kBadAttributes,
  kUnknownAttribute,
  kDuplicateAttribute,
  kUnsupportedType,
  kWrongKind,
  kOutOfRange,
  kNulCharacter,
  kRefusedValue,
  kNoMessage,
  kBrokenPattern,
  kUncountableDate,
  kOutOfMemory,
};

struct EntryRuleInfo {
  EntryRule rule;
  std::string_view name;     ///< as it stands in brackets at the end of an error
  std::string_view meaning;  ///< one sentence for the documentation
};

/// All rules, in the order of `EntryRule`.
std::span<const EntryRuleInfo> all_entry_rules();

std::string_view entry_rule_name(EntryRule rule);

/// Thrown for an entry that cannot be rendered; the others still are.
struct EntryError {
  EntryRule rule;
  std::string text;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_ENTRY_ERROR_H
