#ifndef QZLOG_TOOLS_COMPILER_MESSAGE_TEMPLATE_JUDGE_H
#define QZLOG_TOOLS_COMPILER_MESSAGE_TEMPLATE_JUDGE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/message/reference_formats.h"
#include "tools/compiler/message/stored_template.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// What can be said of a stored template on a rendering path: first why no message comes out, then why it is not the
/// one that was meant.
enum class TemplateReason {
  kBrokenReference,  ///< one that is open, which the library reports as its own mistake, or without room for its name
  kUnknownAttribute,
  kFormatMismatch,
  kGuidReference,
  kStandardFieldType,
  kUndefinedStandardField,  ///< no entry can set it, unless an auxiliary file defines it
  kTooManyReferences,
  kDeepNesting,
  kRefusedPattern,
  kInapplicablePattern,  ///< to some values; the library then ends the process
  kIgnoredDefinition,    ///< of TIMESTAMP: messages show the entry's own time stamp
  kUnknownFormat,        ///< the reference shows nothing
  kHiddenReference,
  kOwnArgument,
  kLostText,
};

/// Whether no message comes out; with kInapplicablePattern it depends on the values.
constexpr bool fails(TemplateReason reason) { return reason <= TemplateReason::kInapplicablePattern; }

/// Whether it depends on the attributes that there are, and not on the text alone.
constexpr bool is_about_attributes(TemplateReason reason) {
  return reason >= TemplateReason::kUnknownAttribute && reason <= TemplateReason::kUndefinedStandardField;
}

struct TemplateFinding {
  TemplateReason reason;
  AnyRule rule;
  std::string text;
  std::string hint;                   ///< what to do about it; may be empty
  std::string name;                   ///< of the attribute that it is about; may be empty
  std::optional<std::size_t> offset;  ///< in the stored template, in bytes, where it has a place

  bool fails() const { return qzlog_compiler::fails(reason); }
  /// A failure is a mistake, unless an auxiliary file can mend it.
  Severity severity() const {
    return fails() && reason != TemplateReason::kUndefinedStandardField ? Severity::kError : Severity::kWarning;
  }
  /// The same to a reader, wherever it stands.
  bool says_the_same(const TemplateFinding& other) const {
    return reason == other.reason && text == other.text && hint == other.hint;
  }
};

struct TemplateJudgement {
  /// In the order of the template, what is about all of it last.
  std::vector<TemplateFinding> findings;
  /// What a reader sees, quoting for ICU undone: texts, in any number of pieces, and references. None where the text
  /// itself keeps a message from coming out.
  std::optional<std::vector<TemplatePart>> shown;

  /// Why no message comes out; null where one does.
  const TemplateFinding* failure() const;
  bool has_errors() const;
};

/// Says what the library does with a stored template. `lookup` gives the types of the attributes that the entry can
/// have; an empty one leaves the references unjudged. `locale` is ICU's name of the language that the ICU path renders
/// in; for this path `stored` is UTF-8. Throws std::bad_alloc, also where ICU ran out of memory and would not tell.
TemplateJudgement judge_template(std::string_view stored, RenderingPath form, const AttributeLookup& lookup,
                                 const std::string& locale = "root");

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MESSAGE_TEMPLATE_JUDGE_H
