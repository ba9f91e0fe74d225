#include "tools/catalog/language_catalog.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "tools/catalog/po_language.h"
#include "tools/catalog/translation_check.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_catalog {
namespace {

using qzlog_compiler::quoted;

constexpr const char* kUpdateHint = "; 'qzlog catalog extract --update' brings the file up to date";

/// Libgettextpo refuses only messages that have the same text too.
void check_contexts(const PoFile& po, const std::string& file, Findings& findings) {
  std::unordered_map<std::string_view, std::size_t> lines;
  for (std::size_t i = 0; i < po.messages.size(); ++i) {
    const PoMessage& message = po.messages[i];
    if (message.obsolete || !message.context) continue;
    const auto [place, added] = lines.try_emplace(*message.context, po.line_of(i));
    if (added) continue;
    findings.error(file, po.line_of(i), CatalogRule::kDuplicateMessage,
                   "a second message for the ID " + quoted(*message.context) + "; the first is in line " +
                       std::to_string(place->second));
  }
}

/// Joins one file with the messages.
class CatalogMaker {
 public:
  CatalogMaker(const CatalogMessages& messages, const LanguageFile& file, Findings& findings)
      : messages_(messages), file_(file), findings_(findings) {}

  LanguageCatalog make() {
    result_.language = file_.language;
    index_translations();
    for (const CatalogMessage& message : messages_.messages()) take(message);
    return std::move(result_);
  }

 private:
  void index_translations() {
    for (std::size_t i = 0; i < file_.po.messages.size(); ++i) {
      const PoMessage& message = file_.po.messages[i];
      if (message.is_header()) continue;
      if (message.obsolete) {
        ++result_.counts.obsolete;
      } else if (!message.context || messages_.find(*message.context) == nullptr) {
        report_unknown(message, i);
      } else {
        translations_.emplace(*message.context, i);
      }
    }
  }

  void report_unknown(const PoMessage& message, std::size_t index) {
    if (message.translation.empty()) return;
    ++result_.counts.obsolete;
    findings_.warning(file_.name, file_.po.line_of(index), CatalogRule::kUnknownMessage,
                      (message.context ? "the sources have no message with the ID " + quoted(*message.context)
                                       : "a message without an ID (msgctxt), which nothing looks up") +
                          kUpdateHint);
  }

  void take(const CatalogMessage& message) {
    result_.texts.push_back({std::string(message.id), message.text->stored});
    if (message.text->written.empty()) return;  // nothing to translate
    const auto place = translations_.find(message.id);
    if (place == translations_.end() || file_.po.messages[place->second].translation.empty()) {
      ++result_.counts.untranslated;
    } else {
      take_translation(message, place->second);
    }
  }

  void take_translation(const CatalogMessage& message, std::size_t index) {
    const PoMessage& translation = file_.po.messages[index];
    const std::size_t line = file_.po.line_of(index);
    if (translation.fuzzy) {
      ++result_.counts.fuzzy;
    } else if (translation.source != message.text->written) {
      ++result_.counts.fuzzy;
      findings_.warning(file_.name, line, CatalogRule::kSourceChanged,
                        "the source text of " + quoted(message.id) + " has changed" + kUpdateHint);
    } else if (std::optional<std::string> stored =
                   lower_translation(message, translation.translation, file_.name, line, findings_)) {
      ++result_.counts.translated;
      result_.texts.back().stored = std::move(*stored);
    } else {
      ++result_.counts.refused;
    }
  }

  const CatalogMessages& messages_;
  const LanguageFile& file_;
  Findings& findings_;
  std::unordered_map<std::string_view, std::size_t> translations_;
  LanguageCatalog result_;
};

}  // namespace

std::optional<LanguageFile> read_language(const PoText& text, Findings& findings) {
  std::optional<PoFile> po = parse_po(text.content, text.name, findings);
  if (!po) return std::nullopt;
  const std::size_t errors_before = findings.error_count();
  const std::string named = header_field(po->header()->translation, "Language");
  const std::string language = named.empty() ? std::filesystem::path(text.name).stem().string() : named;
  const std::optional<std::string> bundle = bundle_name(language);
  if (!bundle) {
    findings.error(text.name, 0, CatalogRule::kPoLanguage,
                   "ICU knows no language " + quoted(language) +
                       (named.empty() ? ", which the file's name gives" : "") +
                       "; the header's field 'Language' names one, as in 'Language: pt_BR'");
  }
  check_contexts(*po, text.name, findings);
  if (findings.error_count() != errors_before) return std::nullopt;
  return LanguageFile{text.name, *bundle, std::move(*po)};
}

std::vector<LanguageCatalog> make_catalogs(const CatalogMessages& messages, std::span<const PoText> files,
                                           Findings& findings) {
  std::map<std::string, LanguageCatalog> catalogs;
  std::map<std::string, std::string> names;
  for (const PoText& text : files) {
    const std::optional<LanguageFile> file = read_language(text, findings);
    if (!file) continue;
    const auto [place, added] = names.try_emplace(file->language, file->name);
    if (!added) {
      findings.error(file->name, 0, CatalogRule::kDuplicateLanguage,
                     "the language " + quoted(file->language) + " is that of " + place->second + ", too");
      continue;
    }
    catalogs.emplace(file->language, CatalogMaker(messages, *file, findings).make());
  }
  std::vector<LanguageCatalog> result;
  result.reserve(catalogs.size());
  for (auto& [language, catalog] : catalogs) result.push_back(std::move(catalog));
  return result;
}

}  // namespace qzlog_catalog
