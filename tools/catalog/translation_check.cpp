#include "tools/catalog/translation_check.h"

#include <algorithm>
#include <span>
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
using qzlog_compiler::RenderingPath;
using qzlog_compiler::RenderingPaths;
using qzlog_compiler::TemplateFinding;
using qzlog_compiler::TemplateJudgement;
using qzlog_compiler::TemplateReason;
using qzlog_tool::ReferenceNotation;

/// The compiler's findings about a text, errors only: its warnings are about the source text as well.
bool report_text(const std::vector<MessageFinding>& found, const std::string& file, std::size_t line,
                 Findings& findings) {
  bool ok = true;
  for (const MessageFinding& finding : found) {
    if (finding.severity != Severity::kError) continue;
    ok = false;
    findings.error(file, line, finding.rule, finding.text).with_hint(finding.hint);
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

/// Why a stored template cannot be shown, or not to its end, by an entry that uses the message.
std::vector<TemplateFinding> find_mistakes(const CatalogMessage& message, std::string_view stored,
                                           const MessageUse& use) {
  const AttributeLookup lookup = [&use](std::string_view name) { return use.scope.find(name); };
  const std::string_view source_text = message.text->stored;
  const TemplateJudgement source = qzlog_compiler::judge_template(source_text, RenderingPath::kIcu, lookup);
  std::vector<TemplateFinding> found = qzlog_compiler::judge_template(stored, RenderingPath::kIcu, lookup).findings;
  std::erase_if(found, [&](const TemplateFinding& finding) {
    return !(finding.fails() || is_about_the_end(finding, stored)) || is_excused(finding, source, source_text);
  });
  return found;
}

/// Those of the first entry that has any.
std::vector<TemplateFinding> find_mistakes(const CatalogMessage& message, std::string_view stored) {
  for (const MessageUse& use : message.uses) {
    std::vector<TemplateFinding> found = find_mistakes(message, stored, use);
    if (!found.empty()) return found;
  }
  return {};
}

/// Whether there are none.
bool report_mistakes(std::span<const TemplateFinding> mistakes, const std::string& file, std::size_t line,
                     Findings& findings) {
  for (const TemplateFinding& mistake : mistakes) {
    findings.error(file, line, mistake.rule, mistake.text).with_hint(mistake.hint);
  }
  return mistakes.empty();
}

bool has_the_same_references(const CatalogMessage& message, std::string_view stored, const std::string& file,
                             std::size_t line, Findings& findings) {
  const auto notation = message.text->raw ? ReferenceNotation::kTemplate : ReferenceNotation::kPlaceholder;
  const auto differences =
      qzlog_tool::compare_references(qzlog_tool::references_in(message.text->stored, RenderingPath::kIcu),
                                     qzlog_tool::references_in(stored, RenderingPath::kIcu));
  for (const qzlog_tool::ReferenceDifference& difference : differences) {
    findings.error(file, line, rule_of(difference), text_of(difference, notation));
  }
  return differences.empty();
}

/// That the text itself is right comes first, then that it refers to the same, which says more than what is wrong with
/// another reference.
bool check_template(const CatalogMessage& message, std::string_view stored, const std::string& file, std::size_t line,
                    Findings& findings) {
  std::vector<TemplateFinding> mistakes = find_mistakes(message, stored);
  const auto about_attributes =
      std::stable_partition(mistakes.begin(), mistakes.end(),
                            [](const TemplateFinding& mistake) { return !is_about_attributes(mistake.reason); });
  return report_mistakes({mistakes.begin(), about_attributes}, file, line, findings) &&
         has_the_same_references(message, stored, file, line, findings) &&
         report_mistakes({about_attributes, mistakes.end()}, file, line, findings);
}

std::optional<std::string> lower_text(const CatalogMessage& message, std::string_view text, const std::string& file,
                                      std::size_t line, Findings& findings) {
  const MessageScope& scope = message.uses.front().scope;
  LoweredMessage lowered = qzlog_compiler::lower_message(
      text, [&](std::string_view name) { return scope.find(name); }, RenderingPaths::kIcu);
  const bool ok = report_text(lowered.findings, file, line, findings) &&
                  has_the_same_references(message, lowered.stored, file, line, findings);
  return ok ? std::optional(std::move(lowered.stored)) : std::nullopt;
}

}  // namespace

std::optional<std::string> lower_translation(const CatalogMessage& message, std::string_view translation,
                                             const std::string& file, std::size_t line, Findings& findings) {
  if (message.text->raw) {
    const bool ok = check_template(message, translation, file, line, findings);
    return ok ? std::optional<std::string>(translation) : std::nullopt;
  }
  return lower_text(message, translation, file, line, findings);
}

}  // namespace qzlog_catalog
