#ifndef QZLOG_TOOLS_REPORT_DIAGNOSTICS_H
#define QZLOG_TOOLS_REPORT_DIAGNOSTICS_H

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qzlog_compiler {

/// A place in a source, both counted from 1, columns in characters. Line 0 means: no place in the source.
struct SourcePosition {
  std::uint32_t line = 0;
  std::uint32_t column = 0;

  bool known() const { return line != 0; }
  friend auto operator<=>(const SourcePosition&, const SourcePosition&) = default;  // NOLINT(modernize-use-nullptr)
};

enum class Severity { kError, kWarning };

/// Every rule that a diagnostic can name. The names that users see are in `all_rules()`; they never change.
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
  kAuxSelectorConflict,
  kAuxAttributeExists,
  kAuxSelectorMessageConflict,
  kAuxMaskIgnored,
  kAuxMessageIgnored,
  kAuxTypeChanged,
  kAuxNameMismatch,
  kNegativeUnsigned,
  kBooleanAsZero,
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

struct RuleInfo {
  Rule rule;
  std::string_view name;     ///< as it stands in brackets at the end of a diagnostic
  std::string_view meaning;  ///< one sentence for the documentation
  bool acceptable = false;   ///< a warning, always or sometimes, that a source may accept
};

/// All rules, in the order of `Rule`.
std::span<const RuleInfo> all_rules();

std::string_view rule_name(Rule rule);

/// Another place that a diagnostic is about, such as the first of two things that conflict.
struct DiagnosticNote {
  std::string file;
  SourcePosition position;
  std::string text;
};

struct Diagnostic {
  std::string file;
  SourcePosition position;
  Severity severity = Severity::kError;
  Rule rule = Rule::kYamlSyntax;
  std::string text;
  std::vector<DiagnosticNote> notes = {};
  std::string hint = {};  ///< what to do about it; may be empty

  /// Adds a place in the same file. Does nothing for an unknown one.
  Diagnostic& with_note(SourcePosition where, std::string what);
  Diagnostic& with_hint(std::string advice);
};

/// The findings about one file.
class Diagnostics {
 public:
  explicit Diagnostics(std::string file) : file_(std::move(file)) {}

  /// What these return is valid until the next finding is added.
  Diagnostic& error(SourcePosition position, Rule rule, std::string text);
  Diagnostic& warning(SourcePosition position, Rule rule, std::string text);
  Diagnostic& add(SourcePosition position, Severity severity, Rule rule, std::string text);

  bool has_errors() const { return error_count_ != 0; }

  /// Drops the warnings for which `unwanted` is true.
  void remove_warnings(const std::function<bool(const Diagnostic&)>& unwanted);

  /// Takes the findings out, sorted by position; those of one position stay in the order they were found.
  std::vector<Diagnostic> take_sorted();

 private:
  std::string file_;
  std::vector<Diagnostic> found_;
  std::size_t error_count_ = 0;
};

/// One line, without notes and hint: `FILE:LINE:COLUMN: error: TEXT [rule-name]`, no place where there is none.
std::ostream& operator<<(std::ostream& out, const Diagnostic& diagnostic);

bool has_errors(std::span<const Diagnostic> diagnostics);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_DIAGNOSTICS_H
