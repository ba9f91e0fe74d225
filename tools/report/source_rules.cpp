#include "tools/report/source_rules.h"

#include <cstddef>

namespace qzlog_compiler {
namespace {

constexpr RuleInfo kRules[] = {
    {Rule::kInvalidUtf8, "invalid-utf8", "The source is not UTF-8."},
    {Rule::kControlCharacter, "control-character", "The source holds a character that YAML does not allow."},
    {Rule::kYamlSyntax, "yaml-syntax", "The source is not well-formed YAML."},
    {Rule::kYamlFeature, "yaml-feature", "An anchor, an alias, a tag or a second document."},
    {Rule::kYamlDepth, "yaml-depth", "Lists and mappings are nested deeper than any definition needs."},
    {Rule::kWrongType, "wrong-type", "A list, a mapping, a text or a number stands where another is needed."},
    {Rule::kUnknownKey, "unknown-key", "A key that means nothing at its place."},
    {Rule::kMissingKey, "missing-key", "A key that has to be there is not."},
    {Rule::kDuplicateKey, "duplicate-key", "A key stands twice in one mapping."},
    {Rule::kConflictingKeys, "conflicting-keys", "Two keys of which only one may be given."},
    {Rule::kBadNumber, "bad-number", "Not a decimal or 0x hexadecimal number."},
    {Rule::kNumberOutOfRange, "number-out-of-range", "A number does not fit 32 bits."},
    {Rule::kBadVersion, "bad-version", "The version is not MAJOR.MINOR of at most 8 bytes."},
    {Rule::kBadEntryName, "bad-entry-name", "An entry's name is not made of A-Z, 0-9 and _."},
    {Rule::kBadAttributeName, "bad-attribute-name", "A name that no message could refer to."},
    {Rule::kNulCharacter, "nul-character", "A text holds a NUL, which would end it in the compiled file."},
    {Rule::kUnknownType, "unknown-type", "An attribute's type does not exist."},
    {Rule::kBadSensitivity, "bad-sensitivity", "An attribute is sensitive in a way that does not exist."},
    {Rule::kHashedType, "hashed-type", "An attribute that is no text is to be hashed."},
    {Rule::kDuplicateId, "duplicate-id", "Two entries have one ID."},
    {Rule::kDuplicateEntryName, "duplicate-entry-name", "Two entries have one name."},
    {Rule::kDuplicateAttribute, "duplicate-attribute", "Two attributes of an entry have one name."},
    {Rule::kDuplicateGlobal, "duplicate-global", "Two global attributes have one name."},
    {Rule::kTooManyAttributes, "too-many-attributes", "An entry has more than 255 attributes."},
    {Rule::kTooManyGlobals, "too-many-globals", "There are more than 255 global attributes."},
    {Rule::kTooManySelectorMessages, "too-many-selector-messages", "More than 255 selector messages."},
    {Rule::kUnknownSelectorAttribute, "unknown-selector-attribute", "The entry lacks its selector attribute."},
    {Rule::kSelectorAttributeType, "selector-attribute-type", "The selector's type cannot be read."},
    {Rule::kSelectorValueRange, "selector-value-range", "The selector attribute cannot have this value."},
    {Rule::kDuplicateSelectorIndex, "duplicate-selector-index", "Two selector messages have one index."},
    {Rule::kDuplicateSelectorValue, "duplicate-selector-value", "Two selector messages have one value."},
    {Rule::kEmptyMessageId, "empty-message-id", "A message without a catalog key.", true},
    {Rule::kUnbalancedBrace, "unbalanced-brace", "A brace that is neither doubled nor part of a placeholder."},
    {Rule::kBadPlaceholder, "bad-placeholder", "A placeholder without a name."},
    {Rule::kUnknownAttribute, "unknown-attribute", "A placeholder for an attribute that does not exist."},
    {Rule::kUnknownFormat, "unknown-format", "A placeholder asks for a format that does not exist."},
    {Rule::kFormatTypeMismatch, "format-type-mismatch", "A format that the attribute's type does not accept."},
    {Rule::kGuidReference, "guid-reference", "A GUID attribute in a message; it can be neither set nor shown."},
    {Rule::kStandardFieldType, "standard-field-type", "A standard field is defined with another type."},
    {Rule::kUndefinedStandardField, "undefined-standard-field", "A standard field that no definition sets.", true},
    {Rule::kAdjacentPlaceholders, "adjacent-placeholders", "Two placeholders with nothing between them."},
    {Rule::kLiteralPercent, "literal-percent", "A percent sign that a path cannot show.", true},
    {Rule::kTooManyReferences, "too-many-references", "More than ten references; the ICU path takes ten.", true},
    {Rule::kLongReferenceName, "long-reference-name", "A name that the ICU path cannot convert.", true},
    {Rule::kPathConflict, "path-conflict", "No single stored text is shown as written by both paths.", true},
    {Rule::kBadDefinitionFile, "bad-definition-file", "A compiled definition file is damaged."},
    {Rule::kBadNamesSection, "bad-names-section", "The names in a compiled definition file are damaged, and ignored."},
    {Rule::kAuxSelectorConflict, "aux-selector-conflict", "Both files give an entry a selector, not the same."},
    {Rule::kAuxAttributeExists, "aux-attribute-exists", "The extended entry has the attribute already."},
    {Rule::kAuxSelectorMessageConflict, "aux-selector-message-conflict",
     "The extended entry has a selector message of this index or value already."},
    {Rule::kAuxMaskIgnored, "aux-mask-ignored", "The extended entry keeps its own mask.", true},
    {Rule::kAuxMessageIgnored, "aux-message-ignored", "An auxiliary entry gives half a message, which does not count.",
     true},
    {Rule::kAuxTypeChanged, "aux-type-changed", "An attribute gets another type than the extended file gave.", true},
    {Rule::kAuxSensitivityLowered, "aux-sensitivity-lowered",
     "An attribute that the extended file marks as sensitive becomes less so.", true},
    {Rule::kAuxNameMismatch, "aux-name-mismatch", "Name and ID do not go together in the two sources.", true},
    {Rule::kNegativeUnsigned, "negative-unsigned", "UInt4 values above 2147483647 show as other numbers.", true},
    {Rule::kBooleanAsZero, "boolean-as-zero", "A Bool in a message, where its value is never shown.", true},
    {Rule::kCurrencyOfReader, "currency-of-reader",
     "An amount shows in the currency of the reader's locale, whatever it was paid in.", true},
    {Rule::kUnusedAttribute, "unused-attribute", "An attribute in no message of its entry, and no selector.", true},
    {Rule::kLongMessage, "long-message", "A message of more than 65,535 bytes.", true},
    {Rule::kHiddenGlobal, "hidden-global", "An entry's attribute has the name of a global attribute.", true},
    {Rule::kQuotedPlaceholder, "quoted-placeholder", "An apostrophe switches a reference off for ICU.", true},
    {Rule::kBrokenTemplate, "broken-template", "No entry can be rendered with a stored template.", true},
    {Rule::kPatternArgument, "pattern-argument", "ICU takes a brace in the text for an argument of its own.", true},
    {Rule::kAuxSharedEntries, "aux-shared-entries",
     "Entries are in both files, which have more together than the library keeps.", true},
    {Rule::kUnknownRule, "unknown-rule", "A source accepts a rule that does not exist."},
    {Rule::kRuleNotAcceptable, "rule-not-acceptable", "A source accepts a rule that is no warning."},
    {Rule::kEmptyReason, "empty-reason", "A source accepts a warning without saying why."},
    {Rule::kUnusedAccept, "unused-accept", "A source accepts a warning that does not occur."},
};

static_assert(is_whole_table(kRules, Rule::kUnusedAccept));

}  // namespace

std::span<const RuleInfo> all_rules() { return kRules; }

const RuleInfo& rule_info(Rule rule) { return kRules[static_cast<std::size_t>(rule)]; }

}  // namespace qzlog_compiler
