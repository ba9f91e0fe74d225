#include "tools/catalog/translation_check.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/message/template_judge.h"
#include "tools/templates/reference_comparison.h"

namespace qzlog_catalog {
namespace {

using qzlog_compiler::AttributeLookup;
using qzlog_compiler::LoweredMessage;
using qzlog_compiler::MessageFinding;
using qzlog_compiler::MessagePath;
using qzlog_compiler::TemplateFinding;
using qzlog_compiler::TemplateForm;
using qzlog_compiler::TemplateJudgement;
using qzlog_compiler::TemplateReason;
using qzlog_tool::ReferenceNotation;

/// The compiler's findings about a text, errors only: its warnings are about the source text as well.
bool report_text(const std::vector<MessageFinding>& found, const std::string& file, std::size_t line,
                 CatalogFindings& findings) {
  bool ok = true;
  for (const MessageFinding& finding : found) {
    if (finding.severity != Severity::kError) continue;
    ok = false;
    findings.add({file, line, Severity::kError, qzlog_compiler::rule_name(finding.rule), finding.text, finding.hint});
  }
  return ok;
}

/// The ICU path reads no further than to the last percent sign.
bool is_about_the_end(const TemplateFinding& finding, std::string_view stored) {
  return finding.reason == TemplateReason::kLostText && stored.find('%', *finding.offset) == std::string_view::npos;
}

/// A translation may lose its end only where the source text does, and refer only with the source text to what another
/// file has to define.
bool is_excused(const TemplateFinding& finding, const TemplateJudgement& source, std::string_view source_text) {
  return std::any_of(source.findings.begin(), source.findings.end(), [&](const TemplateFinding& other) {
    return finding.reason == TemplateReason::kLostText
               ? is_about_the_end(other, source_text)
               : is_about_attributes(finding.reason) && other.says_the_same(finding);
  });
}

/// Why a stored template cannot be shown, or not to its end, by one of the entries that use the message.
std::vector<TemplateFinding> find_mistakes(const CatalogMessage& message, std::string_view stored,
                                           const MessageUse& use) {
  const AttributeLookup lookup = [&use](std::string_view name) { return use.scope.find(name); };
  const std::string_view source_text = message.text->stored;
  const TemplateJudgement source = qzlog_compiler::judge_template(source_text, TemplateForm::kIcu, lookup);
  std::vector<TemplateFinding> found = qzlog_compiler::judge_template(stored, TemplateForm::kIcu, lookup).findings;
  std::erase_if(found, [&](const TemplateFinding& finding) {
    return !(finding.fails() || is_about_the_end(finding, stored)) || is_excused(finding, source, source_text);
  });
  return found;
}

bool can_be_shown(const CatalogMessage& message, std::string_view stored, const std::string& file, std::size_t line,
                  CatalogFindings& findings) {
  for (const MessageUse& use : message.uses) {
    const std::vector<TemplateFinding> mistakes = find_mistakes(message, stored, use);
    for (const TemplateFinding& mistake : mistakes) {
      findings.add({file, line, Severity::kError, mistake.rule, mistake.text, mistake.hint});
    }
    if (!mistakes.empty()) return false;
  }
  return true;
}

bool has_the_same_references(const CatalogMessage& message, std::string_view stored, const std::string& file,
                             std::size_t line, CatalogFindings& findings) {
  const auto notation = message.text->raw ? ReferenceNotation::kTemplate : ReferenceNotation::kPlaceholder;
  const auto differences =
      qzlog_tool::compare_references(qzlog_tool::references_in(message.text->stored, TemplateForm::kIcu),
                                     qzlog_tool::references_in(stored, TemplateForm::kIcu));
  for (const qzlog_tool::ReferenceDifference& difference : differences) {
    findings.add({file, line, Severity::kError, rule_of(difference), text_of(difference, notation)});
  }
  return differences.empty();
}

}  // namespace

std::optional<std::string> lower_translation(const CatalogMessage& message, std::string_view translation,
                                             const std::string& file, std::size_t line, CatalogFindings& findings) {
  std::string stored(translation);
  if (!message.text->raw) {
    const MessageScope& scope = message.uses.front().scope;
    LoweredMessage lowered = qzlog_compiler::lower_message(
        translation, [&](std::string_view name) { return scope.find(name); }, MessagePath::kIcu);
    if (!report_text(lowered.findings, file, line, findings)) return std::nullopt;
    stored = std::move(lowered.stored);
  } else if (!can_be_shown(message, stored, file, line, findings)) {
    return std::nullopt;
  }
  if (!has_the_same_references(message, stored, file, line, findings)) return std::nullopt;
  return stored;
}

}  // namespace qzlog_catalog
