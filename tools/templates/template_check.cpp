#include "tools/templates/template_check.h"

#include <cstddef>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/check_rules.h"
#include "tools/report/source_rules.h"
#include "tools/templates/icu_pattern.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeLookup;
using qzlog_compiler::is_known_format;
using qzlog_compiler::MessageFinding;
using qzlog_compiler::MessagePart;
using qzlog_compiler::quoted;
using qzlog_compiler::Rule;
using qzlog_compiler::StoredTemplate;
using qzlog_compiler::TemplateForm;
using qzlog_compiler::TemplatePart;

/// The compiler closes texts with a reference that shows nothing.
bool is_closing_reference(const TemplatePart& part) { return part.format == '_' && part.text == "TIMESTAMP"; }

class TemplateCheck {
 public:
  TemplateCheck(std::string_view stored, TemplateForm form, const AttributeLookup& lookup)
      : stored_(stored), form_(form), lookup_(lookup), cut_(qzlog_compiler::cut_template(stored, form)) {}

  std::vector<TemplateFinding> check(const std::string& locale) {
    if (!cut_.failure.empty()) {
      add(Rule::kBrokenTemplate, cut_.failure, true);
      return std::move(findings_);
    }
    check_references();
    if (form_ == TemplateForm::kIcu) check_pattern(locale);
    check_lost_text();
    return std::move(findings_);
  }

 private:
  void add(qzlog_compiler::AnyRule rule, std::string text, bool fails, std::string hint = "") {
    findings_.push_back({rule, std::move(text), std::move(hint), fails});
  }

  void check_references() {
    for (const TemplatePart& part : cut_.parts) {
      if (!part.is_reference()) continue;
      if (is_known_format(part.format)) {
        check_format(part);
      } else if (!is_closing_reference(part)) {
        check_unknown_format(part);
      }
    }
  }

  void check_format(const TemplatePart& part) {
    std::vector<MessageFinding> found;
    const MessagePart placeholder{MessagePart::Kind::kPlaceholder, part.text, part.format, part.offset};
    qzlog_compiler::resolve_formats(placeholder, lookup_, found);
    for (MessageFinding& finding : found) {
      add(finding.rule, std::move(finding.text), finding.severity == qzlog_compiler::Severity::kError,
          std::move(finding.hint));
    }
  }

  /// The library looks the attribute up before it leaves the reference out.
  void check_unknown_format(const TemplatePart& part) {
    if (!lookup_(part.text) && part.text != "TIMESTAMP") {
      add(Rule::kUnknownAttribute, "unknown attribute " + quoted(part.text), true);
    } else {
      add(Rule::kUnknownFormat,
          "the format " + quoted(std::string_view(&part.format, 1)) + " of " + quoted(part.text) +
              " does not exist, so the reference shows nothing",
          false, "formats are s C P D T f d u");
    }
  }

  void check_pattern(const std::string& locale) {
    const std::size_t count = shown_references(cut_).size();
    if (count > qzlog_compiler::kMaximumIcuReferences) {
      add(Rule::kTooManyReferences,
          "the ICU path shows at most ten references in a message; this one has " + std::to_string(count), true);
      return;
    }
    const PatternReading reading = read_icu_pattern(cut_, locale);
    report_hidden(reading);
    report_arguments(reading);
    if (!reading.refusal.empty()) add(CheckRule::kRejectedPattern, reading.refusal, true);
  }

  void report_hidden(const PatternReading& reading) {
    const std::vector<const TemplatePart*> references = shown_references(cut_);
    for (const std::size_t hidden : reading.hidden) {
      add(Rule::kQuotedPlaceholder,
          "ICU does not show " + quoted(references[hidden]->text) +
              ", for it stands behind a single apostrophe or within a brace",
          false, "write a literal apostrophe twice and a brace as '{'");
    }
  }

  void report_arguments(const PatternReading& reading) {
    for (const PatternPart& part : reading.parts) {
      if (part.kind != PatternPart::Kind::kArgument) continue;
      add(CheckRule::kPatternArgument, "ICU takes " + quoted(part.text) + " for an argument of its own", false,
          "write a brace as '{'");
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
    add(CheckRule::kLostText, quoted(stored_.substr(begin, end - begin)) + " is never shown", false,
        hint_for_lost(end));
  }

  std::string hint_for_lost(std::size_t end) const {
    if (form_ == TemplateForm::kNarrow) return "a doubled percent sign drops the text before it, and itself";
    if (end < stored_.size()) return "a doubled percent sign drops the text before it";
    return "a text that ends in words needs %_%TIMESTAMP% behind it";
  }

  std::string_view stored_;
  TemplateForm form_;
  const AttributeLookup& lookup_;
  StoredTemplate cut_;
  std::vector<TemplateFinding> findings_;
};

}  // namespace

std::vector<TemplateFinding> check_template(std::string_view stored, TemplateForm form, const AttributeLookup& lookup,
                                            const std::string& locale) {
  return TemplateCheck(stored, form, lookup).check(locale);
}

}  // namespace qzlog_tool
