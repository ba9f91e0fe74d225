#include "tools/explain/entry_explanation.h"

#include <cstddef>
#include <set>
#include <string_view>
#include <utility>

#include "entry/text_limits.h"
#include "tools/compiler/message/template_judge.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/templates/readable_template.h"
#include "tools/templates/source_digest.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeLookup;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::MessageText;
using qzlog_compiler::RenderingPath;
using qzlog_compiler::SelectorMessage;
using qzlog_compiler::TemplateFinding;
using qzlog_compiler::TemplateJudgement;
using qzlog_compiler::TemplatePart;

constexpr std::string_view kOwnTime = "TIMESTAMP";

class Explainer {
 public:
  Explainer(EntryDefinition entry, const DefinitionPair& definitions, const std::vector<CatalogBundle>& bundles)
      : definitions_(definitions), bundles_(bundles) {
    explanation_.entry = std::move(entry);
  }

  EntryExplanation explain() {
    const EntryDefinition& entry = explanation_.entry;
    explanation_.in_standard = definitions_.find_standard(entry.id) != nullptr;
    explanation_.in_auxiliary = definitions_.find_auxiliary(entry.id) != nullptr;
    explanation_.version = definitions_.version_of(entry.id);
    add_message({entry.message_id, std::nullopt, std::nullopt, {}}, entry.message);
    for (const SelectorMessage& message : entry.selector.messages) {
      add_message({message.id, message.index, message.value, {}}, message.message);
    }
    return std::move(explanation_);
  }

 private:
  /// Text that an author wrote is lowered for the path that will be asked for; a template is one for both.
  void add_message(ExplainedMessage message, const MessageText& text) {
    const AttributeLookup lookup = attributes_of(explanation_.entry, definitions_);
    const ExplainedText icu = text_of("definitions", text.stored, RenderingPath::kIcu, lookup);
    message.texts.push_back(icu);
    if (text.raw) {
      ExplainedText narrow = text_of("definitions, without ICU", text.stored, RenderingPath::kNarrow, lookup);
      if (narrow.text != icu.text) message.texts.push_back(std::move(narrow));
    }
    for (const CatalogBundle& bundle : bundles_)
      message.texts.push_back(translation(bundle, message.key, text, lookup));
    explanation_.messages.push_back(std::move(message));
  }

  ExplainedText translation(const CatalogBundle& bundle, const std::string& key, const MessageText& source,
                            const AttributeLookup& lookup) {
    if (!bundle.failure.empty()) return {bundle.locale, std::nullopt, bundle.failure};
    const auto found = bundle.templates.find(key);
    if (found == bundle.templates.end()) return {bundle.locale, std::nullopt, "the catalog lacks it"};
    ExplainedText shown = text_of(bundle.locale, found->second, RenderingPath::kIcu, lookup, bundle.locale);
    const auto digest = bundle.sources.find(key);
    shown.stale = digest != bundle.sources.end() && !is_source_digest_of(digest->second, source.stored);
    return shown;
  }

  ExplainedText text_of(std::string language, const std::string& stored, RenderingPath form,
                        const AttributeLookup& lookup, const std::string& locale = "root") {
    note_references(stored, form);
    const TemplateJudgement judged = qzlog_compiler::judge_template(stored, form, lookup, locale);
    const TemplateFinding* const failure = judged.failure();
    if (failure != nullptr) return {std::move(language), std::nullopt, failure->text};
    return {std::move(language), readable_template(judged, lookup), ""};
  }

  /// The name stands for the entry's own time whatever defines it, too.
  void note_references(const std::string& stored, RenderingPath form) {
    for (const TemplatePart& part : qzlog_compiler::find_references(stored, form)) {
      if (!qzlog_compiler::is_known_format(part.format)) continue;
      explanation_.shows_own_time = explanation_.shows_own_time || part.text == kOwnTime;
      if (qzlog_compiler::find_attribute(explanation_.entry.attributes, part.text) != nullptr) continue;
      const auto* const global = definitions_.find_global(part.text);
      if (global != nullptr && known_globals_.insert(part.text).second) explanation_.globals.push_back(*global);
    }
  }

  const DefinitionPair& definitions_;
  const std::vector<CatalogBundle>& bundles_;
  EntryExplanation explanation_;
  std::set<std::string> known_globals_;
};

}  // namespace

std::optional<EntryExplanation> explain_entry(std::uint32_t id, const DefinitionPair& definitions,
                                              const std::vector<CatalogBundle>& bundles) {
  std::optional<EntryDefinition> entry = definitions.find_entry(id);
  if (!entry) return std::nullopt;
  return Explainer(std::move(*entry), definitions, bundles).explain();
}

std::string value_range(qz_AttributeType type) {
  switch (type) {
    case TypeBool:
      return "true or false";
    case TypeUInt1:
      return "0 to 255";
    case TypeSInt1:
      return "-128 to 127";
    case TypeUInt2:
      return "0 to 65535";
    case TypeSInt2:
      return "-32768 to 32767";
    case TypeUInt4:
      return "0 to 4294967295";
    case TypeSInt4:
      return "-2147483648 to 2147483647";
    case TypeGUID:
      return "can be neither set nor shown";
    default:
      break;
  }
  if (type < TypeChar32 || type > TypeMBChar2K) return "";
  const std::string limit = std::to_string(qzlog::text_limit(static_cast<unsigned char>(type)));
  return "at most " + limit + (type <= TypeChar2K ? " bytes" : " characters");
}

bool is_shown_in_gmt(qz_AttributeType type) { return type == TypeDate || type == TypeTime || type == TypeTimestamp; }

}  // namespace qzlog_tool
