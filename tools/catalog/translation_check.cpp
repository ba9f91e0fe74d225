#include "tools/catalog/translation_check.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>
#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/message/stored_template.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/templates/template_syntax.h"

namespace qzlog_catalog {
namespace {

using qzlog_compiler::LoweredMessage;
using qzlog_compiler::MessageFinding;
using qzlog_compiler::MessagePath;
using qzlog_compiler::quoted;
using qzlog_compiler::TemplateForm;
using qzlog_compiler::TemplatePart;

struct Reference {
  std::string name;
  char format;

  friend bool operator<(const Reference& a, const Reference& b) {
    return std::tie(a.name, a.format) < std::tie(b.name, b.format);
  }
};

using References = std::vector<Reference>;

References shown_references(std::string_view stored) {
  References references;
  for (TemplatePart& part : qzlog_compiler::find_references(stored, TemplateForm::kIcu)) {
    if (part.format != kSilentFormat) references.push_back({std::move(part.text), part.format});
  }
  std::sort(references.begin(), references.end());
  return references;
}

/// What one sorted list has beyond the other.
References beyond(const References& list, const References& other) {
  References result;
  std::set_difference(list.begin(), list.end(), other.begin(), other.end(), std::back_inserter(result));
  return result;
}

/// As authors and translators write it: {Name:F}, or %F%Name% in a stored template.
std::string shown(const Reference& reference, bool raw) {
  const std::string format(1, reference.format);
  return quoted(raw ? '%' + format + '%' + reference.name + '%' : '{' + reference.name + ':' + format + '}');
}

class ReferenceCheck {
 public:
  ReferenceCheck(bool raw, const std::string& file, std::size_t line, Findings& findings)
      : raw_(raw), file_(file), line_(line), findings_(findings) {}

  bool compare(const References& source, const References& translation) {
    lost_ = beyond(source, translation);
    added_ = beyond(translation, source);
    const bool same = lost_.empty() && added_.empty();
    report_formats();
    report(lost_, CatalogRule::kReferenceLost, "the translation lacks ", ", which the source text has");
    report(added_, CatalogRule::kReferenceAdded, "the translation has ",
           ", which the source text has not, or not as often");
    return same;
  }

 private:
  /// A lost and an added reference to one attribute are one change.
  void report_formats() {
    for (auto lost = lost_.begin(); lost != lost_.end();) {
      const auto added = std::find_if(added_.begin(), added_.end(),
                                      [&](const Reference& reference) { return reference.name == lost->name; });
      if (added == added_.end()) {
        ++lost;
        continue;
      }
      findings_.error(file_, line_, CatalogRule::kReferenceFormat,
                      "the translation has " + shown(*added, raw_) + " where the source text has " +
                          shown(*lost, raw_) + ", another format");
      added_.erase(added);
      lost = lost_.erase(lost);
    }
  }

  void report(const References& references, CatalogRule rule, const char* before, const char* behind) {
    for (const Reference& reference : references) {
      findings_.error(file_, line_, rule, before + shown(reference, raw_) + behind);
    }
  }

  bool raw_;
  const std::string& file_;
  std::size_t line_;
  Findings& findings_;
  References lost_;
  References added_;
};

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

/// A template may end in lost text only where the source's does.
bool can_be_shown(std::string_view source, std::string_view stored, const std::string& file, std::size_t line,
                  Findings& findings) {
  std::string failure = template_syntax_failure(stored);
  if (failure.empty() && loses_its_end(stored) && !loses_its_end(source)) {
    failure = "what stands behind its last reference is not shown; end it with %_%TIMESTAMP%";
  }
  if (failure.empty()) return true;
  findings.error(file, line, CatalogRule::kTemplateFailure, "the translated template cannot be shown: " + failure);
  return false;
}

}  // namespace

std::optional<std::string> lower_translation(const CatalogMessage& message, std::string_view translation,
                                             const std::string& file, std::size_t line, Findings& findings) {
  std::string stored(translation);
  if (!message.text->raw) {
    const MessageScope& scope = message.uses.front().scope;
    LoweredMessage lowered = qzlog_compiler::lower_message(
        translation, [&](std::string_view name) { return scope.find(name); }, MessagePath::kIcu);
    if (!report_text(lowered.findings, file, line, findings)) return std::nullopt;
    stored = std::move(lowered.stored);
  } else if (!can_be_shown(message.text->stored, stored, file, line, findings)) {
    return std::nullopt;
  }
  ReferenceCheck check(message.text->raw, file, line, findings);
  if (!check.compare(shown_references(message.text->stored), shown_references(stored))) return std::nullopt;
  return stored;
}

}  // namespace qzlog_catalog
