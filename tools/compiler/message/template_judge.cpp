#include "tools/compiler/message/template_judge.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "message/pattern_nesting.h"
#include "tools/compiler/message/icu_pattern.h"
#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/check_rules.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

using qzlog_tool::CheckRule;

constexpr std::string_view kTimeStamp = "TIMESTAMP";
constexpr const char* kBraceHint = "write a brace as '{'";

AnyRule rule_of(TemplateReason reason) {
  switch (reason) {
    case TemplateReason::kBrokenReference:
      return Rule::kBrokenTemplate;
    case TemplateReason::kUnknownAttribute:
      return Rule::kUnknownAttribute;
    case TemplateReason::kFormatMismatch:
      return Rule::kFormatTypeMismatch;
    case TemplateReason::kGuidReference:
      return Rule::kGuidReference;
    case TemplateReason::kStandardFieldType:
    case TemplateReason::kIgnoredDefinition:
      return Rule::kStandardFieldType;
    case TemplateReason::kUndefinedStandardField:
      return Rule::kUndefinedStandardField;
    case TemplateReason::kTooManyReferences:
      return Rule::kTooManyReferences;
    case TemplateReason::kDeepNesting:
    case TemplateReason::kRefusedPattern:
    case TemplateReason::kInapplicablePattern:
      return CheckRule::kRejectedPattern;
    case TemplateReason::kUnknownFormat:
      return Rule::kUnknownFormat;
    case TemplateReason::kHiddenReference:
      return Rule::kQuotedPlaceholder;
    case TemplateReason::kOwnArgument:
      return Rule::kPatternArgument;
    case TemplateReason::kLostText:
      break;
  }
  return CheckRule::kLostText;
}

/// What the compiler finds in a placeholder, as a reason.
TemplateReason reason_of(Rule rule) {
  switch (rule) {
    case Rule::kUnknownAttribute:
      return TemplateReason::kUnknownAttribute;
    case Rule::kUndefinedStandardField:
      return TemplateReason::kUndefinedStandardField;
    case Rule::kStandardFieldType:
      return TemplateReason::kStandardFieldType;
    case Rule::kGuidReference:
      return TemplateReason::kGuidReference;
    default:
      return TemplateReason::kFormatMismatch;
  }
}

/// The compiler closes texts with a reference that shows nothing.
bool is_closing_reference(const TemplatePart& part) { return part.format == '_' && part.text == kTimeStamp; }

std::string refusal_text(const PatternReading& reading) {
  switch (reading.outcome) {
    case PatternOutcome::kTooDeep:
      return "its arguments and their messages nest deeper than " + std::to_string(qzlog::kMostPatternNesting) +
             " levels";
    case PatternOutcome::kRefused:
      return "ICU refuses the pattern with " + reading.error;
    default:
      return "ICU takes the pattern but cannot apply it (" + reading.error + "), and the library then ends the process";
  }
}

class Judge {
 public:
  Judge(std::string_view stored, RenderingPath form, const AttributeLookup& lookup)
      : stored_(stored), form_(form), lookup_(lookup), cut_(cut_template(stored, form)) {}

  TemplateJudgement judge(const std::string& locale) {
    if (!cut_.failure.empty()) {
      add(TemplateReason::kBrokenReference, cut_.failure);
      return std::move(result_);
    }
    if (lookup_) check_references();
    if (form_ == RenderingPath::kNarrow) {
      show_all();
    } else {
      check_pattern(locale);
    }
    check_lost_text();
    return std::move(result_);
  }

 private:
  void add(TemplateReason reason, std::string text, std::string hint = "") {
    result_.findings.push_back({reason, rule_of(reason), std::move(text), std::move(hint), "", std::nullopt});
  }
  void add(TemplateReason reason, const TemplatePart& part, std::string text, std::string hint = "") {
    result_.findings.push_back({reason, rule_of(reason), std::move(text), std::move(hint), part.text, part.offset});
  }

  void check_references() {
    for (const TemplatePart& part : cut_.parts) {
      if (!part.is_reference()) continue;
      if (is_known_format(part.format)) {
        check_format(part);
      } else {
        check_unknown_format(part);
      }
    }
  }

  /// The time stamp is the entry's own, whatever is defined under its name.
  void check_format(const TemplatePart& part) {
    const std::optional<qz_AttributeType> type = find_type(part.text);
    if (part.text != kTimeStamp) return check_placeholder(part, type);
    std::vector<MessageFinding> found;
    resolve(part, type, found);
    for (MessageFinding& finding : found) {
      if (finding.rule != Rule::kStandardFieldType) continue;
      add(TemplateReason::kIgnoredDefinition, part, std::move(finding.text), std::move(finding.hint));
    }
    check_placeholder(part, std::nullopt);
  }

  void check_placeholder(const TemplatePart& part, std::optional<qz_AttributeType> type) {
    std::vector<MessageFinding> found;
    resolve(part, type, found);
    for (MessageFinding& finding : found) {
      add(reason_of(finding.rule), part, std::move(finding.text), std::move(finding.hint));
    }
  }

  static void resolve(const TemplatePart& part, std::optional<qz_AttributeType> type,
                      std::vector<MessageFinding>& found) {
    const MessagePart placeholder{MessagePart::Kind::kPlaceholder, part.text, part.format, part.offset};
    resolve_formats(
        placeholder, [type](std::string_view) { return type; }, found);
  }

  /// To the compiler TypeUnknown is a mistake that it has reported. Here it is a code that no format accepts.
  std::optional<qz_AttributeType> find_type(std::string_view name) const {
    constexpr auto kUnnamed = static_cast<qz_AttributeType>(0xFF);
    const std::optional<qz_AttributeType> type = lookup_(name);
    return type == TypeUnknown ? kUnnamed : type;
  }

  /// The library looks the attribute up before it leaves the reference out.
  void check_unknown_format(const TemplatePart& part) {
    if (!lookup_(part.text) && !find_standard_field(part.text)) {
      add(TemplateReason::kUnknownAttribute, part, "unknown attribute " + quoted(part.text));
    } else if (!is_closing_reference(part)) {
      add(TemplateReason::kUnknownFormat, part,
          "the format " + quoted(std::string_view(&part.format, 1)) + " of " + quoted(part.text) +
              " does not exist, so the reference shows nothing",
          "formats are " + listed_formats(kFormatCharacters));
    }
  }

  void show_all() {
    result_.shown.emplace();
    std::copy_if(cut_.parts.begin(), cut_.parts.end(), std::back_inserter(*result_.shown),
                 [](const TemplatePart& part) { return !part.is_reference() || is_known_format(part.format); });
  }

  void check_pattern(const std::string& locale) {
    const std::vector<const TemplatePart*> references = shown_references(cut_);
    if (references.size() > kMaximumIcuReferences) {
      add(TemplateReason::kTooManyReferences,
          "the ICU path shows at most ten references in a message; this one has " + std::to_string(references.size()));
      return;
    }
    const PatternReading reading = read_icu_pattern(cut_, locale);
    report_hidden(reading, references);
    report_arguments(reading);
    report_outcome(reading);
    if (reading.outcome == PatternOutcome::kApplies) show_parts(reading, references);
  }

  void report_hidden(const PatternReading& reading, const std::vector<const TemplatePart*>& references) {
    for (const HiddenReference& hidden : reading.hidden) {
      const TemplatePart& part = *references[hidden.reference];
      if (hidden.in_argument) {
        add(TemplateReason::kHiddenReference, part,
            "the reference to " + quoted(part.text) +
                " is off on the ICU path, which takes it for a part of an argument",
            kBraceHint);
      } else {
        add(TemplateReason::kHiddenReference, part,
            "an apostrophe switches the reference to " + quoted(part.text) +
                " off on the ICU path, which shows its number in braces",
            "write the apostrophe before it twice for a literal one");
      }
    }
  }

  void report_arguments(const PatternReading& reading) {
    for (const PatternPart& part : reading.parts) {
      if (part.kind != PatternPart::Kind::kArgument) continue;
      add(TemplateReason::kOwnArgument, "ICU takes " + quoted(part.text) + " for an argument of its own", kBraceHint);
    }
  }

  void report_outcome(const PatternReading& reading) {
    switch (reading.outcome) {
      case PatternOutcome::kApplies:
        return;
      case PatternOutcome::kTooDeep:
        return add(TemplateReason::kDeepNesting, refusal_text(reading));
      case PatternOutcome::kRefused:
        return add(TemplateReason::kRefusedPattern, refusal_text(reading), kBraceHint);
      case PatternOutcome::kInapplicable:
        return add(TemplateReason::kInapplicablePattern, refusal_text(reading), kBraceHint);
    }
  }

  void show_parts(const PatternReading& reading, const std::vector<const TemplatePart*>& references) {
    result_.shown.emplace();
    for (const PatternPart& part : reading.parts) {
      const bool is_reference = part.kind == PatternPart::Kind::kReference;
      result_.shown->push_back(is_reference ? *references[part.reference] : TemplatePart{.text = part.text});
    }
  }

  /// What stands in no part is never shown: text behind the last reference on the ICU path, text before a doubled
  /// percent sign on both, and the sign itself on the narrow path.
  void check_lost_text() {
    std::size_t position = 0;
    for (const TemplatePart& part : cut_.parts) {
      report_lost(position, part.offset);
      position = end_of(part);
    }
    report_lost(position, stored_.size());
  }

  std::size_t end_of(const TemplatePart& part) const {
    if (part.is_reference()) {
      const std::size_t second = stored_.find('%', part.offset + 1);
      return stored_.find('%', second + 1) + 1;
    }
    return part.offset + (stored_.substr(part.offset).starts_with("%%") ? 2 : part.text.size());
  }

  void report_lost(std::size_t begin, std::size_t end) {
    if (begin >= end) return;
    add(TemplateReason::kLostText, quoted(stored_.substr(begin, end - begin)) + " is never shown", hint_for_lost(end));
    result_.findings.back().offset = begin;
  }

  std::string hint_for_lost(std::size_t end) const {
    if (form_ == RenderingPath::kNarrow) return "a doubled percent sign drops the text before it, and itself";
    if (end < stored_.size()) return "a doubled percent sign drops the text before it";
    return "a text that ends in words needs %_%TIMESTAMP% behind it";
  }

  std::string_view stored_;
  RenderingPath form_;
  const AttributeLookup& lookup_;
  StoredTemplate cut_;
  TemplateJudgement result_;
};

}  // namespace

const TemplateFinding* TemplateJudgement::failure() const {
  const auto found =
      std::find_if(findings.begin(), findings.end(), [](const TemplateFinding& finding) { return finding.fails(); });
  return found == findings.end() ? nullptr : &*found;
}

bool TemplateJudgement::has_errors() const {
  return std::any_of(findings.begin(), findings.end(),
                     [](const TemplateFinding& finding) { return finding.severity() == Severity::kError; });
}

TemplateJudgement judge_template(std::string_view stored, RenderingPath form, const AttributeLookup& lookup,
                                 const std::string& locale) {
  return Judge(stored, form, lookup).judge(locale);
}

}  // namespace qzlog_compiler
