#include "tools/catalog/catalog_messages.h"

#include <utility>

#include "tools/catalog/bundle_source.h"
#include "tools/compiler/model/model_merge.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_catalog {
namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::MessageText;
using qzlog_compiler::quoted;
using qzlog_compiler::SelectorMessage;

bool same_message(const MessageText& a, const MessageText& b) {
  return a.written == b.written && a.raw == b.raw && a.stored == b.stored;
}

std::string conflict_text(std::string_view id, const CatalogMessage& first, const MessageText& second) {
  const bool same_text = first.text->written == second.written && first.text->raw == second.raw;
  const MessageUse& use = first.uses.front();
  return "the message ID " + quoted(id) + " stands for another message in " + std::string(use.file) + ", line " +
         std::to_string(use.position.line) + (same_text ? ", whose attributes are shown in another format" : "") +
         "; give one of them another ID";
}

}  // namespace

std::optional<qz_AttributeType> MessageScope::find(std::string_view name) const {
  for (const std::vector<const Attributes*>* const lists : {&own_, &global_}) {
    for (const Attributes* const list : *lists) {
      const AttributeDefinition* const attribute = qzlog_compiler::find_attribute(*list, name);
      if (attribute != nullptr) return attribute->type;
    }
  }
  return std::nullopt;
}

std::optional<CatalogMessages> CatalogMessages::collect(std::vector<qzlog_tool::Definitions> sources,
                                                        Findings& findings) {
  CatalogMessages result(std::move(sources));
  const std::size_t errors_before = findings.error_count();
  const qzlog_compiler::ModelIndex standard(result.sources_.front().model);
  for (std::size_t i = 0; i < result.sources_.size(); ++i) result.take_source(i, standard, findings);
  return findings.error_count() == errors_before ? std::optional(std::move(result)) : std::nullopt;
}

const CatalogMessage* CatalogMessages::find(std::string_view id) const {
  const auto place = places_.find(id);
  return place == places_.end() ? nullptr : &messages_[place->second];
}

void CatalogMessages::take_source(std::size_t index, const qzlog_compiler::ModelIndex& standard, Findings& findings) {
  for (const EntryDefinition& entry : sources_[index].model.entries) {
    take_entry(entry, index == 0 ? nullptr : standard.find_entry(entry.id), index, findings);
  }
}

/// An auxiliary entry that gives no whole message leaves the standard one in place, or the entry without one.
void CatalogMessages::take_entry(const EntryDefinition& entry, const EntryDefinition* extended, std::size_t source,
                                 Findings& findings) {
  std::vector<const MessageScope::Attributes*> own = {&entry.attributes};
  if (extended != nullptr) own.push_back(&extended->attributes);
  std::vector<const MessageScope::Attributes*> global = {&sources_[source].model.globals};
  if (source != 0) global.push_back(&sources_.front().model.globals);
  MessageUse use{&entry, nullptr, entry.selector.attribute, sources_[source].shown_path, {}, MessageScope(own, global)};
  if (source == 0 || qzlog_compiler::gives_message(entry)) {
    use.position = entry.message.position;
    add(entry.message_id, entry.message, use, findings);
  }
  for (const SelectorMessage& message : entry.selector.messages) {
    use.selected = &message;
    use.position = message.message.position;
    add(message.id, message.message, use, findings);
  }
}

void CatalogMessages::add(std::string_view id, const MessageText& text, MessageUse use, Findings& findings) {
  if (id.empty()) return;
  const auto [place, added] = places_.try_emplace(id, messages_.size());
  if (added) {
    if (!is_bundle_key(id)) {
      findings.error(std::string(use.file), use.position, CatalogRule::kMessageIdCharacter,
                     "a catalog cannot hold the message ID " + quoted(id) +
                         "; IDs are made of letters and digits of ASCII, blanks and \"%&'()*+,-./:;<=>?_");
    }
    messages_.push_back({id, &text, {std::move(use)}});
    return;
  }
  CatalogMessage& first = messages_[place->second];
  if (!same_message(*first.text, text)) {
    findings.error(std::string(use.file), use.position, CatalogRule::kMessageIdConflict,
                   conflict_text(id, first, text));
  }
  first.uses.push_back(std::move(use));
}

}  // namespace qzlog_catalog
