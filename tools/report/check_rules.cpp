#include "tools/report/check_rules.h"

#include <array>
#include <cstddef>

namespace qzlog_tool {

namespace {

using qzlog_compiler::Rule;
using qzlog_compiler::RuleInfo;

constexpr RuleInfo kRules[] = {
    {CheckRule::kRefusedFile, "refused-file", "The library cannot load the file."},
    {CheckRule::kRefusedRecord, "refused-record", "The library cannot read the record of an entry."},
    {CheckRule::kRefusedEntryId, "refused-entry-id",
     "The record of an entry carries another ID than the map gives it."},
    {CheckRule::kRefusedAttribute, "refused-attribute", "An attribute stands twice in an entry, or in both files."},
    {CheckRule::kRefusedSelectorAttribute, "refused-selector-attribute",
     "The two files give an entry different selector attributes."},
    {CheckRule::kRefusedSelectorMessage, "refused-selector-message",
     "The two files give an entry selector messages of one index or one value."},
    {CheckRule::kRejectedPattern, "rejected-pattern", "ICU refuses the pattern that the template becomes."},
    {CheckRule::kLostText, "lost-text", "A part of the text that is never shown."},
    {CheckRule::kBadBundle, "bad-bundle",
     "A bundle of the catalog cannot be read, or there is no table of messages for it."},
    {CheckRule::kNoRootBundle, "no-root-bundle", "The catalog has nothing for languages without a bundle."},
    {CheckRule::kMissingMessage, "missing-message", "A language lacks a message that the definitions use."},
    {CheckRule::kUnusedMessage, "unused-message", "A language has a message that no definition uses."},
    {CheckRule::kReferenceLost, "reference-lost",
     "A translation lacks a placeholder that the source text has, or has it less often.", false, "lost-reference"},
    {CheckRule::kReferenceAdded, "reference-added",
     "A translation has a placeholder that the source text lacks, or has it more often.", false, "added-reference"},
    {CheckRule::kReferenceFormat, "reference-format",
     "A translation asks for another format of an attribute than the source text.", false, "changed-format"},
    {CheckRule::kUnchangedText, "unchanged-text", "A translation reads as the source text does."},
    {CheckRule::kStaleCatalog, "stale-catalog", "A language was built from other texts than the definitions have."},
    {CheckRule::kSyslogName, "syslog-name",
     "Two attributes that an event may have are the same parameter in messages of syslog, or one has none there."},
};
static_assert(is_whole_table(kRules, CheckRule::kSyslogName));

constexpr std::array kSharedRules = {
    Rule::kInvalidUtf8,
    Rule::kBadVersion,
    Rule::kEmptyMessageId,
    Rule::kPathConflict,
    Rule::kUnknownType,
    Rule::kDuplicateId,
    Rule::kDuplicateGlobal,
    Rule::kTooManyAttributes,
    Rule::kTooManyGlobals,
    Rule::kTooManySelectorMessages,
    Rule::kUnknownSelectorAttribute,
    Rule::kSelectorAttributeType,
    Rule::kSelectorValueRange,
    Rule::kDuplicateSelectorIndex,
    Rule::kDuplicateSelectorValue,
    Rule::kUnknownAttribute,
    Rule::kUnknownFormat,
    Rule::kFormatTypeMismatch,
    Rule::kGuidReference,
    Rule::kStandardFieldType,
    Rule::kUndefinedStandardField,
    Rule::kTooManyReferences,
    Rule::kBadDefinitionFile,
    Rule::kBadNamesSection,
    Rule::kAuxSelectorConflict,
    Rule::kAuxAttributeExists,
    Rule::kAuxSelectorMessageConflict,
    Rule::kAuxMaskIgnored,
    Rule::kAuxMessageIgnored,
    Rule::kAuxTypeChanged,
    Rule::kAuxSensitivityLowered,
    Rule::kAuxNameMismatch,
    Rule::kQuotedPlaceholder,
    Rule::kBrokenTemplate,
    Rule::kPatternArgument,
};

}  // namespace

std::span<const RuleInfo> all_check_rules() { return kRules; }

const RuleInfo& rule_info(CheckRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

std::span<const Rule> shared_check_rules() { return kSharedRules; }

}  // namespace qzlog_tool
