#include "tools/report/diagnostics.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <utility>

namespace qzlog_compiler {
namespace {

constexpr std::array kRules = {
    RuleInfo{Rule::kInvalidUtf8, "invalid-utf8", "The source is not UTF-8."},
    RuleInfo{Rule::kControlCharacter, "control-character", "The source holds a character that YAML does not allow."},
    RuleInfo{Rule::kYamlSyntax, "yaml-syntax", "The source is not well-formed YAML."},
    RuleInfo{Rule::kYamlFeature, "yaml-feature", "An anchor, an alias, a tag or a second document."},
    RuleInfo{Rule::kYamlDepth, "yaml-depth", "Lists and mappings are nested deeper than any definition needs."},
    RuleInfo{Rule::kWrongType, "wrong-type", "A list, a mapping, a text or a number stands where another is needed."},
    RuleInfo{Rule::kUnknownKey, "unknown-key", "A key that means nothing at its place."},
    RuleInfo{Rule::kMissingKey, "missing-key", "A key that has to be there is not."},
    RuleInfo{Rule::kDuplicateKey, "duplicate-key", "A key stands twice in one mapping."},
    RuleInfo{Rule::kConflictingKeys, "conflicting-keys", "Two keys of which only one may be given."},
    RuleInfo{Rule::kBadNumber, "bad-number", "Not a decimal or 0x hexadecimal number."},
    RuleInfo{Rule::kNumberOutOfRange, "number-out-of-range", "A number does not fit 32 bits."},
    RuleInfo{Rule::kBadVersion, "bad-version", "The version is not MAJOR.MINOR of at most 8 bytes."},
    RuleInfo{Rule::kBadEntryName, "bad-entry-name", "An entry's name is not made of A-Z, 0-9 and _."},
    RuleInfo{Rule::kBadAttributeName, "bad-attribute-name", "A name that no message could refer to."},
    RuleInfo{Rule::kNulCharacter, "nul-character", "A text holds a NUL, which would end it in the compiled file."},
    RuleInfo{Rule::kUnknownType, "unknown-type", "An attribute's type does not exist."},
    RuleInfo{Rule::kDuplicateId, "duplicate-id", "Two entries have one ID."},
    RuleInfo{Rule::kDuplicateEntryName, "duplicate-entry-name", "Two entries have one name."},
    RuleInfo{Rule::kDuplicateAttribute, "duplicate-attribute", "Two attributes of an entry have one name."},
    RuleInfo{Rule::kDuplicateGlobal, "duplicate-global", "Two global attributes have one name."},
    RuleInfo{Rule::kTooManyAttributes, "too-many-attributes", "An entry has more than 255 attributes."},
    RuleInfo{Rule::kTooManyGlobals, "too-many-globals", "There are more than 255 global attributes."},
    RuleInfo{Rule::kTooManySelectorMessages, "too-many-selector-messages", "More than 255 selector messages."},
    RuleInfo{Rule::kUnknownSelectorAttribute, "unknown-selector-attribute", "The entry lacks its selector attribute."},
    RuleInfo{Rule::kSelectorAttributeType, "selector-attribute-type", "The selector's type cannot be read."},
    RuleInfo{Rule::kSelectorValueRange, "selector-value-range", "The selector attribute cannot have this value."},
    RuleInfo{Rule::kDuplicateSelectorIndex, "duplicate-selector-index", "Two selector messages have one index."},
    RuleInfo{Rule::kDuplicateSelectorValue, "duplicate-selector-value", "Two selector messages have one value."},
    RuleInfo{Rule::kEmptyMessageId, "empty-message-id", "A message without a catalog key.", true},
    RuleInfo{Rule::kUnbalancedBrace, "unbalanced-brace", "A brace that is neither doubled nor part of a placeholder."},
    RuleInfo{Rule::kBadPlaceholder, "bad-placeholder", "A placeholder without a name."},
    RuleInfo{Rule::kUnknownAttribute, "unknown-attribute", "A placeholder for an attribute that does not exist."},
    RuleInfo{Rule::kUnknownFormat, "unknown-format", "A placeholder asks for a format that does not exist."},
    RuleInfo{Rule::kFormatTypeMismatch, "format-type-mismatch", "A format that the attribute's type does not accept."},
    RuleInfo{Rule::kGuidReference, "guid-reference", "A GUID attribute in a message; it can be neither set nor shown."},
    RuleInfo{Rule::kStandardFieldType, "standard-field-type", "A standard field is defined with another type."},
    RuleInfo{Rule::kUndefinedStandardField, "undefined-standard-field", "A standard field that no definition sets.",
             true},
    RuleInfo{Rule::kAdjacentPlaceholders, "adjacent-placeholders", "Two placeholders with nothing between them."},
    RuleInfo{Rule::kLiteralPercent, "literal-percent", "A percent sign that a path cannot show.", true},
    RuleInfo{Rule::kTooManyReferences, "too-many-references", "More than ten references; the ICU path takes ten.",
             true},
    RuleInfo{Rule::kLongReferenceName, "long-reference-name", "A name that the ICU path cannot convert.", true},
    RuleInfo{Rule::kPathConflict, "path-conflict", "No single stored text is shown as written by both paths.", true},
    RuleInfo{Rule::kBadDefinitionFile, "bad-definition-file", "A compiled definition file is damaged."},
    RuleInfo{Rule::kAuxSelectorConflict, "aux-selector-conflict", "Both files give an entry a selector, not the same."},
    RuleInfo{Rule::kAuxAttributeExists, "aux-attribute-exists", "The extended entry has the attribute already."},
    RuleInfo{Rule::kAuxSelectorMessageConflict, "aux-selector-message-conflict",
             "The extended entry has a selector message of this index or value already."},
    RuleInfo{Rule::kAuxMaskIgnored, "aux-mask-ignored", "The extended entry keeps its own mask.", true},
    RuleInfo{Rule::kAuxMessageIgnored, "aux-message-ignored",
             "An auxiliary entry gives half a message, which does not count.", true},
    RuleInfo{Rule::kAuxTypeChanged, "aux-type-changed", "An attribute gets another type than the extended file gave.",
             true},
    RuleInfo{Rule::kAuxNameMismatch, "aux-name-mismatch", "Name and ID do not go together in the two sources.", true},
    RuleInfo{Rule::kNegativeUnsigned, "negative-unsigned", "UInt4 values above 2147483647 show as other numbers.",
             true},
    RuleInfo{Rule::kBooleanAsZero, "boolean-as-zero", "A Bool in a message, where its value is never shown.", true},
    RuleInfo{Rule::kUnusedAttribute, "unused-attribute", "An attribute in no message of its entry, and no selector.",
             true},
    RuleInfo{Rule::kLongMessage, "long-message", "A message of more than 65,535 bytes.", true},
    RuleInfo{Rule::kHiddenGlobal, "hidden-global", "An entry's attribute has the name of a global attribute.", true},
    RuleInfo{Rule::kQuotedPlaceholder, "quoted-placeholder", "An apostrophe switches a reference off for ICU.", true},
    RuleInfo{Rule::kBrokenTemplate, "broken-template", "No entry can be rendered with a stored template.", true},
    RuleInfo{Rule::kPatternArgument, "pattern-argument", "ICU takes a brace in the text for an argument of its own.",
             true},
    RuleInfo{Rule::kAuxSharedEntries, "aux-shared-entries",
             "Entries are in both files, which have more together than the library keeps.", true},
    RuleInfo{Rule::kUnknownRule, "unknown-rule", "A source accepts a rule that does not exist."},
    RuleInfo{Rule::kRuleNotAcceptable, "rule-not-acceptable", "A source accepts a rule that is no warning."},
    RuleInfo{Rule::kEmptyReason, "empty-reason", "A source accepts a warning without saying why."},
    RuleInfo{Rule::kUnusedAccept, "unused-accept", "A source accepts a warning that does not occur."},
};

constexpr bool in_enumeration_order() {
  for (std::size_t i = 0; i < kRules.size(); ++i) {
    if (static_cast<std::size_t>(kRules[i].rule) != i) return false;
  }
  return static_cast<std::size_t>(Rule::kUnusedAccept) + 1 == kRules.size();
}
static_assert(in_enumeration_order(), "rule_name() indexes the table by the rule");

}  // namespace

std::span<const RuleInfo> all_rules() { return kRules; }

std::string_view rule_name(Rule rule) { return kRules[static_cast<std::size_t>(rule)].name; }

Diagnostic& Diagnostic::with_note(SourcePosition where, std::string what) {
  if (where.known()) notes.push_back({file, where, std::move(what)});
  return *this;
}

Diagnostic& Diagnostic::with_hint(std::string advice) {
  hint = std::move(advice);
  return *this;
}

Diagnostic& Diagnostics::error(SourcePosition position, Rule rule, std::string text) {
  return add(position, Severity::kError, rule, std::move(text));
}

Diagnostic& Diagnostics::warning(SourcePosition position, Rule rule, std::string text) {
  return add(position, Severity::kWarning, rule, std::move(text));
}

Diagnostic& Diagnostics::add(SourcePosition position, Severity severity, Rule rule, std::string text) {
  if (severity == Severity::kError) ++error_count_;
  return found_.emplace_back(Diagnostic{file_, position, severity, rule, std::move(text)});
}

void Diagnostics::remove_warnings(const std::function<bool(const Diagnostic&)>& unwanted) {
  std::erase_if(found_, [&unwanted](const Diagnostic& diagnostic) {
    return diagnostic.severity == Severity::kWarning && unwanted(diagnostic);
  });
}

std::vector<Diagnostic> Diagnostics::take_sorted() {
  std::stable_sort(found_.begin(), found_.end(),
                   [](const Diagnostic& a, const Diagnostic& b) { return a.position < b.position; });
  error_count_ = 0;
  return std::exchange(found_, {});
}

std::ostream& operator<<(std::ostream& out, const Diagnostic& diagnostic) {
  out << diagnostic.file << ':';
  if (diagnostic.position.known()) out << diagnostic.position.line << ':' << diagnostic.position.column << ':';
  out << (diagnostic.severity == Severity::kError ? " error: " : " warning: ");
  return out << diagnostic.text << " [" << rule_name(diagnostic.rule) << ']';
}

bool has_errors(std::span<const Diagnostic> diagnostics) {
  return std::any_of(diagnostics.begin(), diagnostics.end(),
                     [](const Diagnostic& diagnostic) { return diagnostic.severity == Severity::kError; });
}

}  // namespace qzlog_compiler
