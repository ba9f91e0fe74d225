#ifndef QZLOG_TOOLS_REPORT_SOURCE_RULES_H
#define QZLOG_TOOLS_REPORT_SOURCE_RULES_H

#include <span>

#include "tools/report/rule_table.h"

namespace qzlog_compiler {

/// What the compiler finds in definitions, in sources and compiled files alike.
enum class Rule {
  kInvalidUtf8,
  kControlCharacter,
  kYamlSyntax,
  kYamlFeature,
  kYamlDepth,
  kWrongType,
  kUnknownKey,
  kMissingKey,
  kDuplicateKey,
  kConflictingKeys,
  kBadNumber,
  kNumberOutOfRange,
  kBadVersion,
  kBadEntryName,
  kBadAttributeName,
  kNulCharacter,
  kUnknownType,
  kBadSensitivity,
  kHashedType,
  kDuplicateId,
  kDuplicateEntryName,
  kDuplicateAttribute,
  kDuplicateGlobal,
  kTooManyAttributes,
  kTooManyGlobals,
  kTooManySelectorMessages,
  kUnknownSelectorAttribute,
  kSelectorAttributeType,
  kSelectorValueRange,
  kDuplicateSelectorIndex,
  kDuplicateSelectorValue,
  kEmptyMessageId,
  kUnbalancedBrace,
  kBadPlaceholder,
  kUnknownAttribute,
  kUnknownFormat,
  kFormatTypeMismatch,
  kGuidReference,
  kStandardFieldType,
  kUndefinedStandardField,
  kAdjacentPlaceholders,
  kLiteralPercent,
  kTooManyReferences,
  kLongReferenceName,
  kPathConflict,
  kBadDefinitionFile,
  kBadNamesSection,
  kAuxSelectorConflict,
  kAuxAttributeExists,
  kAuxSelectorMessageConflict,
  kAuxMaskIgnored,
  kAuxMessageIgnored,
  kAuxTypeChanged,
  kAuxSensitivityLowered,
  kAuxNameMismatch,
  kNegativeUnsigned,
  kBooleanAsZero,
  kCurrencyOfReader,
  kUnusedAttribute,
  kLongMessage,
  kHiddenGlobal,
  kQuotedPlaceholder,
  kBrokenTemplate,
  kPatternArgument,
  kAuxSharedEntries,
  kUnknownRule,
  kRuleNotAcceptable,
  kEmptyReason,
  kUnusedAccept,
};

/// All rules, in the order of `Rule`.
std::span<const RuleInfo> all_rules();

const RuleInfo& rule_info(Rule rule);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_SOURCE_RULES_H
