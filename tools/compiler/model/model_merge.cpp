#include "tools/compiler/model/model_merge.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace qzlog_compiler {
namespace {

/// An attribute that is there already moves to the end, as it does in the library.
void add_or_replace(std::vector<AttributeDefinition>& attributes, AttributeDefinition added) {
  std::erase_if(attributes, [&added](const AttributeDefinition& attribute) { return attribute.name == added.name; });
  added.position = {};
  attributes.push_back(std::move(added));
}

MessageText without_position(MessageText message) {
  message.position = {};
  return message;
}

/// A selector is an attribute that its own record lists; a name alone makes none, nor does a later attribute of it.
std::string merged_selector(const EntryDefinition& entry, const EntryDefinition& aux) {
  if (const AttributeDefinition* const selector = selector_attribute(entry)) return selector->name;
  const AttributeDefinition* const added = selector_attribute(aux);
  return added == nullptr ? "" : added->name;
}

void append_selector_messages(const Selector& added, Selector& selector) {
  for (SelectorMessage message : added.messages) {
    message.message.position = message.index_position = message.value_position = {};
    selector.messages.push_back(std::move(message));
  }
}

void extend_entry(EntryDefinition& entry, const EntryDefinition& aux) {
  entry.selector.attribute = merged_selector(entry, aux);
  for (const AttributeDefinition& attribute : aux.attributes) add_or_replace(entry.attributes, attribute);
  append_selector_messages(aux.selector, entry.selector);
  entry.word = aux.word;
  entry.word_position = {};
  if (entry.mask == 0) {
    entry.mask = aux.mask;
    entry.mask_position = {};
  }
  if (gives_message(aux)) {
    entry.message_id = aux.message_id;
    entry.message_id_position = {};
    entry.message = without_position(aux.message);
  }
  if (entry.name.empty()) entry.name = aux.name;
  if (entry.summary.empty()) entry.summary = aux.summary;
}

}  // namespace

bool gives_message(const EntryDefinition& aux) { return !aux.message_id.empty() && !aux.message.stored.empty(); }

EntryDefinition merge_entry(const EntryDefinition* standard, const EntryDefinition& aux) {
  EntryDefinition entry;
  if (standard != nullptr) entry = *standard;
  entry.id = aux.id;
  extend_entry(entry, aux);
  return entry;
}

DefinitionModel merge_models(DefinitionModel standard, const DefinitionModel& aux) {
  for (const AttributeDefinition& global : aux.globals) add_or_replace(standard.globals, global);
  std::unordered_map<std::uint32_t, std::size_t> places;
  for (std::size_t i = 0; i < standard.entries.size(); ++i) places.emplace(standard.entries[i].id, i);
  for (const EntryDefinition& entry : aux.entries) {
    const auto extended = places.find(entry.id);
    if (extended == places.end()) {
      standard.entries.push_back(merge_entry(nullptr, entry));
    } else {
      extend_entry(standard.entries[extended->second], entry);
    }
  }
  return standard;
}

}  // namespace qzlog_compiler
