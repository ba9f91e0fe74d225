#include "tools/check/catalog_check.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "tools/check/check_report.h"
#include "tools/compiler/message/stored_template.h"
#include "tools/compiler/message/template_judge.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/check_rules.h"
#include "tools/templates/readable_template.h"
#include "tools/templates/reference_comparison.h"
#include "tools/templates/source_digest.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeLookup;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::Finding;
using qzlog_compiler::quoted;
using qzlog_compiler::RenderingPath;
using qzlog_compiler::SelectorMessage;
using qzlog_compiler::TemplateFinding;
using qzlog_compiler::TemplateJudgement;

/// A message of the definitions, of one entry or of several that share a key.
struct SourceMessage {
  std::uint32_t entry_id = 0;
  std::string stored;
};

using SourceMessages = std::map<std::string, std::vector<SourceMessage>>;

using MessageKeys = std::set<std::string>;

std::string about_message(const std::string& key) { return "message " + quoted(key); }

/// Calls `add` with the key and the stored text of each message of the entry that has a key.
template <typename Add>
void each_message(const EntryDefinition& entry, Add add) {
  if (!entry.message_id.empty()) add(entry.message_id, entry.message.stored);
  for (const SelectorMessage& message : entry.selector.messages) {
    if (!message.id.empty()) add(message.id, message.message.stored);
  }
}

SourceMessages messages_of(const std::map<std::uint32_t, EntryDefinition>& entries) {
  SourceMessages messages;
  for (const auto& item : entries) {
    const EntryDefinition& entry = item.second;
    each_message(entry, [&](const std::string& key, const std::string& stored) {
      messages[key].push_back({entry.id, stored});
    });
  }
  return messages;
}

/// The keys of the standard definitions, those of messages that an auxiliary file replaces among them: a catalog has
/// these too, for programs that do not load that file.
MessageKeys standard_keys_of(const DefinitionPair& definitions) {
  MessageKeys keys;
  for (const std::uint32_t id : definitions.entry_ids()) {
    const EntryDefinition* const entry = definitions.find_standard(id);
    if (entry == nullptr) continue;
    each_message(*entry, [&](const std::string& key, const std::string&) { keys.insert(key); });
  }
  return keys;
}

/// Whether there is anything to translate outside the placeholders.
bool has_words(std::string_view readable) {
  bool in_placeholder = false;
  for (const char character : readable) {
    if (character == '{') in_placeholder = true;
    const auto byte = static_cast<unsigned char>(character);
    if (!in_placeholder && (byte >= 0x80 || std::isalpha(byte) != 0)) return true;
    if (character == '}') in_placeholder = false;
  }
  return false;
}

/// " (entry 1)", " (entries 1, 2)"
std::string entries_text(const std::vector<std::uint32_t>& ids) {
  std::string text = ids.size() == 1 ? " (entry " : " (entries ";
  for (std::size_t i = 0; i < ids.size(); ++i) text += (i == 0 ? "" : ", ") + std::to_string(ids[i]);
  return text + ')';
}

/// A list as text, without its end where it is long.
std::string first_of(const std::vector<std::string>& items) {
  constexpr std::size_t kShown = 5;
  std::string text;
  for (std::size_t i = 0; i < std::min(items.size(), kShown); ++i) text += (i == 0 ? "" : ", ") + items[i];
  return items.size() <= kShown ? text : text + " and " + std::to_string(items.size() - kShown) + " more";
}

/// One language against the definitions.
class BundleCheck {
 public:
  BundleCheck(const CatalogBundle& bundle, const SourceMessages& messages, const MessageKeys& standard_keys,
              const std::map<std::uint32_t, EntryDefinition>& entries, const DefinitionPair& definitions,
              bool may_be_unchanged, std::vector<Finding>& findings)
      : bundle_(bundle),
        messages_(messages),
        standard_keys_(standard_keys),
        entries_(entries),
        definitions_(definitions),
        may_be_unchanged_(may_be_unchanged),
        report_(bundle.file, findings) {}

  void check() {
    if (!bundle_.failure.empty()) {
      report_.error(CheckRule::kBadBundle, bundle_.failure);
      return;
    }
    if (!bundle_.has_own_table) {
      check_fallback();
      return;
    }
    for (const auto& [key, sources] : messages_) check_message(key, sources);
    for (const auto& [key, stored] : bundle_.templates) check_key(key);
    check_sources();
  }

 private:
  /// An empty bundle says on purpose that readers of the source language get what its parents have.
  void check_fallback() {
    if (may_be_unchanged_) return;
    report_.warning(CheckRule::kUnchangedText,
                    "the bundle has no table STRING_TABLE; its readers get the one that it falls back to");
  }

  void check_message(const std::string& key, const std::vector<SourceMessage>& sources) {
    const auto found = bundle_.templates.find(key);
    for (const SourceMessage& source : sources) {
      report_.about_entry(source.entry_id, about_message(key));
      if (found == bundle_.templates.end()) {
        report_.error(CheckRule::kMissingMessage,
                      "the language " + bundle_.locale + " lacks it, so the message fails for its readers",
                      "a bundle with messages of its own gets none from the bundles that it falls back to");
      } else {
        check_translation(source, found->second);
      }
    }
  }

  void check_translation(const SourceMessage& source, const std::string& stored) {
    const AttributeLookup lookup = attributes_of(entries_.at(source.entry_id), definitions_);
    const TemplateJudgement judged =
        qzlog_compiler::judge_template(stored, RenderingPath::kIcu, lookup, bundle_.locale);
    for (const TemplateFinding& finding : judged.findings) {
      report_.add(finding.severity(), finding.rule, finding.text, finding.hint);
    }
    // What the definitions themselves cannot show is no measure for a translation.
    if (source.stored.empty() || !qzlog_compiler::cut_template(source.stored, RenderingPath::kIcu).failure.empty()) {
      return;
    }
    compare_references(source.stored, stored, lookup);
    if (!may_be_unchanged_) compare_texts(source.stored, judged, lookup);
  }

  void compare_references(const std::string& source, const std::string& stored, const AttributeLookup& lookup) {
    const auto differences = qzlog_tool::compare_references(references_in(source, RenderingPath::kIcu),
                                                            references_in(stored, RenderingPath::kIcu));
    for (const ReferenceDifference& difference : differences) {
      const bool is_known = lookup(difference.name) || qzlog_compiler::find_standard_field(difference.name);
      if (difference.kind == ReferenceDifference::Kind::kAdded && !is_known) continue;  // an error already
      report_.warning(rule_of(difference), text_of(difference, ReferenceNotation::kPlaceholder));
    }
  }

  void compare_texts(const std::string& source, const TemplateJudgement& judged, const AttributeLookup& lookup) {
    const auto text = readable_template(judged, lookup);
    if (!text || !has_words(*text)) return;
    if (text != readable_template(qzlog_compiler::judge_template(source, RenderingPath::kIcu, lookup), lookup)) return;
    report_.warning(CheckRule::kUnchangedText,
                    "the text " + quoted(*text) + " is that of the definition, untranslated");
  }

  void check_key(const std::string& key) {
    if (messages_.contains(key) || standard_keys_.contains(key)) return;
    report_.about(about_message(key));
    report_.warning(CheckRule::kUnusedMessage, "no definition has this key");
  }

  /// What a message was built from that is not what the definitions have now.
  void check_sources() {
    std::vector<std::string> stale;
    for (const auto& [key, sources] : messages_) {
      if (!bundle_.templates.contains(key)) continue;  // said already
      const std::vector<std::uint32_t> ids = stale_entries(key, sources);
      if (!ids.empty()) stale.push_back(quoted(key) + entries_text(ids));
    }
    if (stale.empty()) return;
    report_.about_file();
    report_.warning(CheckRule::kStaleCatalog,
                    (stale.size() == 1 ? "1 message was built from another text"
                                       : std::to_string(stale.size()) + " messages were built from other texts") +
                        " than the definitions have: " + first_of(stale),
                    "build the catalog again, with 'qzlog catalog build'");
  }

  std::vector<std::uint32_t> stale_entries(const std::string& key, const std::vector<SourceMessage>& sources) const {
    std::vector<std::uint32_t> ids;
    const auto digest = bundle_.sources.find(key);
    if (digest == bundle_.sources.end()) return ids;
    for (const SourceMessage& source : sources) {
      if (!is_source_digest_of(digest->second, source.stored)) ids.push_back(source.entry_id);
    }
    return ids;
  }

  const CatalogBundle& bundle_;
  const SourceMessages& messages_;
  const MessageKeys& standard_keys_;
  const std::map<std::uint32_t, EntryDefinition>& entries_;
  const DefinitionPair& definitions_;
  bool may_be_unchanged_;
  CheckReport report_;
};

std::string language_of(const std::string& locale) { return locale.substr(0, locale.find_first_of("_-")); }

}  // namespace

void check_catalog(const std::vector<CatalogBundle>& bundles, const std::string& folder,
                   const DefinitionPair& definitions, const std::string& source_language,
                   std::vector<Finding>& findings) {
  std::map<std::uint32_t, EntryDefinition> entries;
  for (const std::uint32_t id : definitions.entry_ids()) entries.emplace(id, *definitions.find_entry(id));
  const SourceMessages messages = messages_of(entries);
  const MessageKeys standard_keys = standard_keys_of(definitions);
  if (bundles.front().locale != "root") {
    CheckReport(folder, findings)
        .warning(CheckRule::kNoRootBundle,
                 "the catalog has no root.res: readers whose language has no bundle get no messages");
  }
  for (const CatalogBundle& bundle : bundles) {
    const bool may_be_unchanged = bundle.locale == "root" || language_of(bundle.locale) == source_language;
    BundleCheck(bundle, messages, standard_keys, entries, definitions, may_be_unchanged, findings).check();
  }
}

}  // namespace qzlog_tool
