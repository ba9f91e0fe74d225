#include "tools/diff/model_diff.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/sensitivity.h"
#include "tools/compiler/text/hexadecimal.h"
#include "tools/diff/attribute_diff.h"
#include "tools/diff/text_diff.h"

namespace qzlog_compiler {
namespace {

/// What can happen to the attributes of a list.
struct AttributeRules {
  DiffRule added;
  DiffRule removed;
  DiffRule renamed;
  DiffRule reordered;
  DiffRule redirected;
};

constexpr AttributeRules kOwnRules = {DiffRule::kAttributeAdded, DiffRule::kAttributeRemoved,
                                      DiffRule::kAttributeRenamed, DiffRule::kAttributeOrderChanged,
                                      DiffRule::kRedirectChanged};
constexpr AttributeRules kGlobalRules = {DiffRule::kGlobalAdded, DiffRule::kGlobalRemoved, DiffRule::kGlobalRenamed,
                                         DiffRule::kGlobalOrderChanged, DiffRule::kGlobalRedirectChanged};

std::string names_in_order(const std::vector<AttributePair>& pairs, const std::vector<AttributeDefinition>& list) {
  std::unordered_set<const AttributeDefinition*> in_both;
  for (const AttributePair& pair : pairs) {
    if (pair.before != nullptr && pair.after != nullptr) in_both.insert({pair.before, pair.after});
  }
  std::string names;
  for (const AttributeDefinition& attribute : list) {
    if (in_both.contains(&attribute)) names += (names.empty() ? "" : ", ") + attribute.name;
  }
  return names;
}

std::optional<std::string> text_or_none(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

/// The type that a reference has in messages.
AttributeLookup types_of(const EntryDefinition& entry, const ModelIndex& index) {
  return [&entry, &index](std::string_view name) -> std::optional<qz_AttributeType> {
    if (const std::optional<qz_AttributeType> standard = find_standard_field(name)) return standard;
    if (const AttributeDefinition* const own = find_attribute(entry.attributes, name)) return own->type;
    const AttributeDefinition* const global = index.find_global(name);
    return global == nullptr ? std::nullopt : std::optional(global->type);
  };
}

struct EntryPair {
  const EntryDefinition* before = nullptr;
  const EntryDefinition* after = nullptr;

  std::uint32_t id() const { return after != nullptr ? after->id : before->id; }
};

/// Finds entries by ID, then by name; sorted by ID.
std::vector<EntryPair> match_entries(const ModelIndex& old_index, const ModelIndex& new_index) {
  std::vector<EntryPair> pairs;
  std::unordered_set<const EntryDefinition*> renumbered;
  for (const EntryDefinition& entry : old_index.model().entries) {
    const EntryDefinition* after = new_index.find_entry(entry.id);
    if (after == nullptr && !entry.name.empty()) {
      after = new_index.find_entry_by_name(entry.name);
      if (after != nullptr && old_index.find_entry(after->id) != nullptr) after = nullptr;
      if (after != nullptr) renumbered.insert(after);
    }
    pairs.push_back({&entry, after});
  }
  for (const EntryDefinition& entry : new_index.model().entries) {
    if (old_index.find_entry(entry.id) == nullptr && !renumbered.contains(&entry)) pairs.push_back({nullptr, &entry});
  }
  std::stable_sort(pairs.begin(), pairs.end(), [](const EntryPair& a, const EntryPair& b) { return a.id() < b.id(); });
  return pairs;
}

struct MessagePair {
  const SelectorMessage* before = nullptr;
  const SelectorMessage* after = nullptr;

  std::uint32_t index() const { return after != nullptr ? after->index : before->index; }
};

/// Finds selector messages by index, then by value, then by catalog key; sorted by index.
class SelectorMatcher {
 public:
  SelectorMatcher(const std::vector<SelectorMessage>& old_list, const std::vector<SelectorMessage>& new_list) {
    for (const SelectorMessage& message : old_list) old_left_.push_back(&message);
    for (const SelectorMessage& message : new_list) new_left_.push_back(&message);
  }

  std::vector<MessagePair> match() {
    match_by([](const SelectorMessage& message) { return message.index; });
    match_by([](const SelectorMessage& message) { return message.value; });
    match_by([](const SelectorMessage& message) { return std::string_view(message.id); });
    for (const SelectorMessage* const message : old_left_) pairs_.push_back({message, nullptr});
    for (const SelectorMessage* const message : new_left_) pairs_.push_back({nullptr, message});
    std::stable_sort(pairs_.begin(), pairs_.end(),
                     [](const MessagePair& a, const MessagePair& b) { return a.index() < b.index(); });
    return std::move(pairs_);
  }

 private:
  using Messages = std::vector<const SelectorMessage*>;

  template <typename Key>
  void match_by(Key key_of) {
    Messages old_unmatched;
    for (const SelectorMessage* const message : old_left_) {
      const auto found = std::find_if(new_left_.begin(), new_left_.end(),
                                      [&](const SelectorMessage* other) { return key_of(*other) == key_of(*message); });
      if (found == new_left_.end()) {
        old_unmatched.push_back(message);
      } else {
        pairs_.push_back({message, *found});
        new_left_.erase(found);
      }
    }
    old_left_ = std::move(old_unmatched);
  }

  Messages old_left_;
  Messages new_left_;
  std::vector<MessagePair> pairs_;
};

class ModelDiff {
 public:
  ModelDiff(const DefinitionModel& old_model, const DefinitionModel& new_model)
      : old_index_(old_model), new_index_(new_model) {}

  std::vector<DiffChange> compare() {
    compare_attributes({}, old_index_.model().globals, new_index_.model().globals, kGlobalRules);
    for (const EntryPair& pair : match_entries(old_index_, new_index_)) compare_entries(pair);
    return std::move(changes_);
  }

 private:
  void add(DiffRule rule, const DiffPlace& place, std::optional<std::string> before, std::optional<std::string> after) {
    changes_.push_back({rule, place, std::move(before), std::move(after)});
  }

  void add_if_changed(DiffRule rule, const DiffPlace& place, const std::string& before, const std::string& after) {
    if (before != after) add(rule, place, before, after);
  }

  void compare_entries(const EntryPair& pair) {
    DiffPlace place;
    place.old_entry = pair.before;
    place.new_entry = pair.after;
    if (pair.before == nullptr) {
      add(DiffRule::kEntryAdded, place, std::nullopt, pair.after->message.written);
    } else if (pair.after == nullptr) {
      add(DiffRule::kEntryRemoved, place, pair.before->message.written, std::nullopt);
    } else {
      compare_fields(place, *pair.before, *pair.after);
      compare_message(place, pair.before->message_id, pair.after->message_id, pair.before->message,
                      pair.after->message);
      compare_attributes(place, pair.before->attributes, pair.after->attributes, kOwnRules);
      compare_selectors(place, pair.before->selector, pair.after->selector);
    }
  }

  void compare_fields(const DiffPlace& place, const EntryDefinition& before, const EntryDefinition& after) {
    add_if_changed(DiffRule::kEntryRenumbered, place, std::to_string(before.id), std::to_string(after.id));
    if (!before.name.empty() && !after.name.empty()) {  // files without names do not know
      add_if_changed(DiffRule::kEntryRenamed, place, before.name, after.name);
      if (before.summary != after.summary) {
        add(DiffRule::kSummaryChanged, place, text_or_none(before.summary), text_or_none(after.summary));
      }
    }
    add_if_changed(DiffRule::kMaskChanged, place, bits_text(before.mask), bits_text(after.mask));
    add_if_changed(DiffRule::kWordChanged, place, std::to_string(before.word), std::to_string(after.word));
  }

  void compare_message(const DiffPlace& place, const std::string& old_id, const std::string& new_id,
                       const MessageText& before, const MessageText& after) {
    add_if_changed(DiffRule::kMessageIdChanged, place, old_id, new_id);
    std::optional<TextChange> change = compare_texts({&before, types_of(*place.old_entry, old_index_)},
                                                     {&after, types_of(*place.new_entry, new_index_)});
    if (change) add(change->rule, place, std::move(change->before), std::move(change->after));
  }

  void compare_attributes(const DiffPlace& place, const std::vector<AttributeDefinition>& old_list,
                          const std::vector<AttributeDefinition>& new_list, const AttributeRules& rules) {
    const AttributeMatch match = match_attributes(old_list, new_list);
    for (const AttributePair& pair : match.pairs) {
      if (place.entry() != nullptr && is_no_renaming(pair)) {
        compare_attribute(place, {pair.before, nullptr}, rules);
        compare_attribute(place, {nullptr, pair.after}, rules);
      } else {
        compare_attribute(place, pair, rules);
      }
    }
    if (!match.reordered) return;
    add(rules.reordered, place, names_in_order(match.pairs, old_list), names_in_order(match.pairs, new_list));
  }

  /// Whether two names that seem to be one attribute's are not: the entry has the old one still, or had the new one
  /// before, as a global attribute.
  bool is_no_renaming(const AttributePair& pair) const {
    if (pair.before == nullptr || pair.after == nullptr || pair.before->name == pair.after->name) return false;
    return new_index_.find_global(pair.before->name) != nullptr || old_index_.find_global(pair.after->name) != nullptr;
  }

  void compare_attribute(DiffPlace place, const AttributePair& pair, const AttributeRules& rules) {
    place.old_attribute = pair.before;
    place.new_attribute = pair.after;
    if (place.entry() != nullptr && compare_owners(place)) return;
    if (pair.before == nullptr) {
      add(rules.added, place, std::nullopt, std::string(short_type_name(pair.after->type)));
    } else if (pair.after == nullptr) {
      add(rules.removed, place, std::string(short_type_name(pair.before->type)), std::nullopt);
    } else {
      add_if_changed(rules.renamed, place, pair.before->name, pair.after->name);
      compare_types(place, *pair.before, *pair.after);
      if (pair.before->redirect != pair.after->redirect) {
        add(rules.redirected, place, text_or_none(pair.before->redirect), text_or_none(pair.after->redirect));
      }
      compare_sensitivities(place, *pair.before, *pair.after);
    }
  }

  void compare_sensitivities(const DiffPlace& place, const AttributeDefinition& before,
                             const AttributeDefinition& after) {
    if (!old_index_.model().has_names || !new_index_.model().has_names) return;
    add_if_changed(DiffRule::kSensitivityChanged, place, std::string(sensitivity_name(before.sensitivity)),
                   std::string(sensitivity_name(after.sensitivity)));
  }

  /// Entries have their own attributes and the global ones, so what moves from one list to the other stays.
  bool compare_owners(DiffPlace place) {
    const bool is_added = place.old_attribute == nullptr;
    if (is_added) place.old_attribute = old_index_.find_global(place.new_attribute->name);
    const bool is_removed = place.new_attribute == nullptr;
    if (is_removed) place.new_attribute = new_index_.find_global(place.old_attribute->name);
    if ((!is_added && !is_removed) || place.old_attribute == nullptr || place.new_attribute == nullptr) return false;
    add(is_added ? DiffRule::kAttributeMadeOwn : DiffRule::kAttributeMadeGlobal, place, is_added ? "global" : "entry",
        is_added ? "entry" : "global");
    compare_types(place, *place.old_attribute, *place.new_attribute);
    compare_sensitivities(place, *place.old_attribute, *place.new_attribute);
    return true;
  }

  void compare_types(const DiffPlace& place, const AttributeDefinition& before, const AttributeDefinition& after) {
    const std::optional<DiffRule> rule = type_change(before.type, after.type);
    if (!rule) return;
    add(*rule, place, std::string(short_type_name(before.type)), std::string(short_type_name(after.type)));
  }

  /// The messages of a selector that is new or gone as a whole are part of that one change.
  void compare_selectors(const DiffPlace& place, const Selector& before, const Selector& after) {
    const bool is_added = before.attribute.empty() && !after.attribute.empty();
    const bool is_removed = !before.attribute.empty() && after.attribute.empty();
    if (is_added || is_removed) {
      add(is_added ? DiffRule::kSelectorAdded : DiffRule::kSelectorRemoved, place, text_or_none(before.attribute),
          text_or_none(after.attribute));
    } else {
      add_if_changed(DiffRule::kSelectorAttributeChanged, place, before.attribute, after.attribute);
    }
    if ((is_added && before.messages.empty()) || (is_removed && after.messages.empty())) return;
    for (const MessagePair& pair : SelectorMatcher(before.messages, after.messages).match()) {
      compare_selector_message(place, pair);
    }
  }

  void compare_selector_message(DiffPlace place, const MessagePair& pair) {
    place.old_message = pair.before;
    place.new_message = pair.after;
    if (pair.before == nullptr) {
      add(DiffRule::kSelectorMessageAdded, place, std::nullopt, pair.after->message.written);
    } else if (pair.after == nullptr) {
      add(DiffRule::kSelectorMessageRemoved, place, pair.before->message.written, std::nullopt);
    } else {
      add_if_changed(DiffRule::kSelectorIndexChanged, place, std::to_string(pair.before->index),
                     std::to_string(pair.after->index));
      add_if_changed(DiffRule::kSelectorValueChanged, place, std::to_string(pair.before->value),
                     std::to_string(pair.after->value));
      compare_message(place, pair.before->id, pair.after->id, pair.before->message, pair.after->message);
    }
  }

  const ModelIndex old_index_;
  const ModelIndex new_index_;
  std::vector<DiffChange> changes_;
};

}  // namespace

std::vector<DiffChange> compare_models(const DefinitionModel& old_model, const DefinitionModel& new_model) {
  return ModelDiff(old_model, new_model).compare();
}

}  // namespace qzlog_compiler
