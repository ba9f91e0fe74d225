#include "tools/merge/definition_layers.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::SelectorMessage;

bool alike(const AttributeDefinition& left, const AttributeDefinition& right) {
  return left.name == right.name && left.type == right.type && left.redirect == right.redirect &&
         left.sensitivity == right.sensitivity;
}

bool alike(const SelectorMessage& left, const SelectorMessage& right) {
  return left.index == right.index && left.value == right.value && left.id == right.id &&
         left.message.stored == right.message.stored;
}

template <class Value>
bool alike(const std::vector<Value>& left, const std::vector<Value>& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const Value& own, const Value& other) { return alike(own, other); });
}

bool alike(const EntryDefinition& left, const EntryDefinition& right) {
  return left.id == right.id && left.name == right.name && left.mask == right.mask && left.word == right.word &&
         left.message_id == right.message_id && left.message.stored == right.message.stored &&
         left.selector.attribute == right.selector.attribute && alike(left.attributes, right.attributes) &&
         alike(left.selector.messages, right.selector.messages);
}

/// The attributes that an entry may have, as its own.
std::vector<AttributeDefinition> all_attributes(const EntryDefinition& entry, const DefinitionModel& model) {
  std::vector<AttributeDefinition> all = entry.attributes;
  for (const AttributeDefinition& global : model.globals) {
    if (find_attribute(entry.attributes, global.name) == nullptr) all.push_back(global);
  }
  return all;
}

}  // namespace

DefinitionLayers::DefinitionLayers(std::vector<DefinitionModel> sets) {
  fold_globals(sets);
  for (const DefinitionModel& set : sets) add(set);
  add_stranger();
  DefinitionModel empty;
  if (!sets.empty()) empty.version = sets.front().version;
  layers_.push_back(std::move(empty));
  indexes_.emplace_back();
}

// One that no line has, so that there are names where a name is not known.
void DefinitionLayers::add_stranger() {
  const auto is_known = [&](std::uint32_t id) {
    return std::any_of(places_.begin(), places_.end(), [id](const auto& places) { return places.contains(id); });
  };
  EntryDefinition stranger;
  stranger.id = std::numeric_limits<std::uint32_t>::max();
  while (is_known(stranger.id)) --stranger.id;
  stranger.name = "QZLOG_NO_EVENT";
  indexes_.push_back({{{stranger.id, 0}}, {{stranger.name, stranger.id}}});
  layers_.push_back({"1.0", {}, {std::move(stranger)}, true});
}

// Global attributes are those of a whole layer. Where the sets do not agree on them, each entry takes those of its set.
void DefinitionLayers::fold_globals(std::vector<DefinitionModel>& sets) {
  const auto agrees = [&](const DefinitionModel& set) { return alike(set.globals, sets.front().globals); };
  if (std::all_of(sets.begin(), sets.end(), agrees)) return;
  for (DefinitionModel& set : sets) {
    const bool fits = std::all_of(set.entries.begin(), set.entries.end(), [&](const EntryDefinition& entry) {
      return all_attributes(entry, set).size() <= qzlog_compiler::kMaximumCount;
    });
    if (!fits) continue;
    for (EntryDefinition& entry : set.entries) entry.attributes = all_attributes(entry, set);
    set.globals.clear();
  }
}

void DefinitionLayers::add(const DefinitionModel& set) {
  std::unordered_map<std::uint32_t, std::size_t> places;
  auto& names = names_.emplace_back();
  for (const EntryDefinition& entry : set.entries) {
    places[entry.id] = layer_for(entry, set);
    if (!entry.name.empty()) names.emplace(entry.name, entry.id);
  }
  note_contradictions(places);
  places_.push_back(std::move(places));
}

void DefinitionLayers::note_contradictions(const std::unordered_map<std::uint32_t, std::size_t>& places) {
  for (const auto& [id, layer] : places) {
    for (const auto& others : places_) {
      const auto found = others.find(id);
      if (found != others.end() && found->second != layer) contradicted_.insert(id);
    }
  }
}

std::size_t DefinitionLayers::layer_for(const EntryDefinition& entry, const DefinitionModel& set) {
  std::size_t at = 0;
  while (at < layers_.size() && !(alike(layers_[at].globals, set.globals) && fits(at, entry))) ++at;
  if (at == layers_.size()) {
    layers_.push_back({set.version, set.globals, {}, true});
    indexes_.emplace_back();
  }
  Index& index = indexes_[at];
  if (!index.entries.try_emplace(entry.id, layers_[at].entries.size()).second) return at;
  layers_[at].entries.push_back(entry);
  if (!entry.name.empty()) index.names.emplace(entry.name, entry.id);
  return at;
}

/// Whether a layer has the entry already, or nothing in its place.
bool DefinitionLayers::fits(std::size_t layer, const EntryDefinition& entry) const {
  const Index& index = indexes_[layer];
  if (const auto found = index.entries.find(entry.id); found != index.entries.end()) {
    return alike(layers_[layer].entries[found->second], entry);
  }
  return entry.name.empty() || !index.names.contains(entry.name);
}

std::optional<std::uint32_t> DefinitionLayers::find_id(std::size_t set, std::string_view name) const {
  const auto found = names_[set].find(std::string(name));
  return found != names_[set].end() ? std::optional(found->second) : std::nullopt;
}

std::size_t DefinitionLayers::layer_of(std::size_t set, std::uint32_t id, std::size_t current) const {
  if (const auto found = places_[set].find(id); found != places_[set].end()) return found->second;
  return indexes_[current].entries.contains(id) ? empty_layer() : current;
}

// The library says more of a name that it does not know where there are names at all.
std::size_t DefinitionLayers::layer_without(std::string_view name, std::size_t set, std::size_t current) const {
  if (names_[set].empty()) return empty_layer();
  const auto lacks = [&](std::size_t layer) {
    return !indexes_[layer].names.empty() && !indexes_[layer].names.contains(std::string(name));
  };
  if (lacks(current)) return current;
  std::size_t layer = 0;
  while (layer < empty_layer() && !lacks(layer)) ++layer;
  return layer;
}

}  // namespace qzlog_tool
