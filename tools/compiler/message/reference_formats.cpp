#include "tools/compiler/message/reference_formats.h"

#include <optional>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

class FormatResolver {
 public:
  FormatResolver(const MessagePart& placeholder, std::vector<MessageFinding>& findings)
      : placeholder_(placeholder), findings_(findings) {}

  std::string resolve(const AttributeLookup& lookup) {
    const std::optional<qz_AttributeType> standard = find_standard_field(placeholder_.text);
    const std::optional<qz_AttributeType> defined = lookup(placeholder_.text);
    if (standard) return resolve_standard_field(*standard, defined);
    if (!defined) {
      add(Severity::kError, Rule::kUnknownAttribute, "unknown attribute " + quoted(placeholder_.text),
          "a placeholder names an attribute of the entry, a global attribute or a standard field");
      findings_.back().name = placeholder_.text;
      return "";
    }
    return formats_of(*defined);
  }

 private:
  /// Messages know these names under a type of their own and look for the value only then.
  std::string resolve_standard_field(qz_AttributeType standard, std::optional<qz_AttributeType> defined) {
    const bool is_time_stamp = standard == TypeTimestamp;
    if (!defined && !is_time_stamp) {
      add(Severity::kWarning, Rule::kUndefinedStandardField,
          "nothing here defines the standard field " + placeholder_.text +
              ", so no entry can set it and the message fails",
          "define it as a global attribute of type MBChar32");
    }
    const bool fits =
        !defined || *defined == TypeUnknown ||
        (is_time_stamp ? *defined == TypeTimestamp : *defined >= TypeMBChar32 && *defined <= TypeMBChar2K);
    if (!fits) {
      add(Severity::kError, Rule::kStandardFieldType,
          "the standard field " + placeholder_.text + " is read as " +
              (is_time_stamp ? "the entry's own time stamp" : "an MBChar text") + ", but is defined as " +
              std::string(short_type_name(*defined)),
          is_time_stamp ? "define it as Timestamp, or not at all" : "define it as MBChar32");
      return "";
    }
    return formats_of(standard);
  }

  std::string formats_of(qz_AttributeType type) {
    if (type == TypeUnknown) return "s";
    if (type == TypeGUID) {
      add(Severity::kError, Rule::kGuidReference,
          quoted(placeholder_.text) + " is a GUID attribute, which can be neither set nor shown",
          "give it the type Char64");
      return "";
    }
    if (placeholder_.format == '\0') return std::string(default_formats(type));
    const std::string_view accepted = accepted_formats(type);
    if (accepted.find(placeholder_.format) == std::string_view::npos) {
      add(Severity::kError, Rule::kFormatTypeMismatch,
          "the format '" + std::string(1, placeholder_.format) + "' does not accept " +
              std::string(short_type_name(type)) + " attributes as " + quoted(placeholder_.text),
          accepted.empty() ? "" : "the type is shown by " + listed_formats(accepted));
      return "";
    }
    return std::string(1, placeholder_.format);
  }

  void add(Severity severity, Rule rule, std::string text, std::string hint) {
    findings_.push_back({placeholder_.offset, severity, rule, std::move(text), std::move(hint)});
  }

  const MessagePart& placeholder_;
  std::vector<MessageFinding>& findings_;
};

}  // namespace

std::string resolve_formats(const MessagePart& placeholder, const AttributeLookup& lookup,
                            std::vector<MessageFinding>& findings) {
  return FormatResolver(placeholder, findings).resolve(lookup);
}

}  // namespace qzlog_compiler
