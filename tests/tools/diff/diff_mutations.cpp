#include "tests/tools/diff/diff_mutations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "tools/compiler/message/message_lowering.h"

namespace diff_mutations {
namespace {

using namespace qzlog_compiler;
using qz_test::SeededRandom;

constexpr SourcePosition kInASource = {1, 1};
constexpr qz_AttributeType kTypes[] = {TypeBool,     TypeUInt1,    TypeSInt1, TypeUInt2,  TypeSInt2,
                                       TypeUInt4,    TypeSInt4,    TypeFloat, TypeChar32, TypeChar256,
                                       TypeMBChar32, TypeMBChar1K, TypeDate,  TypeTime,   TypeTimestamp};

template <typename Range>
auto& pick(Range& range, SeededRandom& random) {
  return range[static_cast<std::size_t>(random.between(0, static_cast<long long>(std::size(range)) - 1))];
}

std::string placeholder(const std::string& name) { return '{' + name + '}'; }

bool refers_to(const MessageText& message, const std::string& name) {
  return message.written.find(placeholder(name)) != std::string::npos ||
         message.written.find('{' + name + ':') != std::string::npos;
}

bool refers_to(const EntryDefinition& entry, const std::string& name) {
  const auto& messages = entry.selector.messages;
  return refers_to(entry.message, name) || std::any_of(messages.begin(), messages.end(), [&](const auto& message) {
           return refers_to(message.message, name);
         });
}

MessageText random_text(const std::vector<AttributeDefinition>& attributes, SeededRandom& random) {
  static const std::string kWords[] = {"disk", "fu ll", "d'accord", "{{", "\u00E9t\u00E9"};
  MessageText text;
  text.written = "begin";
  for (long long i = random.between(0, 4); i > 0; --i) {
    text.written += ' ' + pick(kWords, random);
    if (!attributes.empty() && random.one_in(2)) text.written += ' ' + placeholder(pick(attributes, random).name);
  }
  text.position = kInASource;
  return text;
}

EntryDefinition random_entry(std::uint32_t number, const std::vector<AttributeDefinition>& globals,
                             SeededRandom& random) {
  EntryDefinition entry;
  entry.id = number * 10;
  entry.name = "ENTRY_" + std::to_string(number);
  entry.summary = "Summary";
  entry.mask = static_cast<std::uint32_t>(random.between(0, 9));
  entry.message_id = "key." + std::to_string(number);
  for (long long i = random.between(0, 6); i > 0; --i) {
    entry.attributes.push_back({"A" + std::to_string(i), pick(kTypes, random), random.one_in(3) ? "to" : "", {}});
  }
  if (!globals.empty() && random.one_in(3)) entry.attributes.push_back(globals.front());
  std::vector<AttributeDefinition> known = entry.attributes;
  known.insert(known.end(), globals.begin(), globals.end());
  entry.message = random_text(known, random);
  if (entry.attributes.empty() || random.one_in(3)) return entry;
  entry.attributes.push_back({"Chooser", TypeUInt2, "", {}});
  entry.selector.attribute = "Chooser";
  for (std::uint32_t i = 1; i <= static_cast<std::uint32_t>(random.between(1, 3)); ++i) {
    const std::string id = "key." + std::to_string(number) + '.' + std::to_string(i);
    entry.selector.messages.push_back({i, i * 100, id, random_text(known, random), kInASource, kInASource});
  }
  return entry;
}

using Apply = std::function<std::optional<Place>(DefinitionModel&, SeededRandom&)>;

Apply on_entry(std::function<bool(EntryDefinition&, SeededRandom&)> change) {
  return [change](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
    EntryDefinition& entry = pick(model.entries, random);
    if (!change(entry, random)) return std::nullopt;
    return Place{entry.id, "", 0};
  };
}

/// On the text of an entry or of one of its selector messages.
Apply on_text(std::function<bool(EntryDefinition&, MessageText&, SeededRandom&)> change) {
  return [change](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
    EntryDefinition& entry = pick(model.entries, random);
    auto& messages = entry.selector.messages;
    SelectorMessage* const message = messages.empty() || random.one_in(2) ? nullptr : &pick(messages, random);
    if (!change(entry, message == nullptr ? entry.message : message->message, random)) return std::nullopt;
    return Place{entry.id, "", message == nullptr ? 0 : message->index};
  };
}

Apply on_selector_message(std::function<void(SelectorMessage&)> change) {
  return [change](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
    EntryDefinition& entry = pick(model.entries, random);
    if (entry.selector.messages.empty()) return std::nullopt;
    SelectorMessage& message = pick(entry.selector.messages, random);
    change(message);
    return Place{entry.id, "", message.index};
  };
}

/// On an own attribute that no text and no selector needs.
Apply on_free_attribute(std::function<bool(EntryDefinition&, std::size_t)> change) {
  return [change](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
    EntryDefinition& entry = pick(model.entries, random);
    if (entry.attributes.empty()) return std::nullopt;
    const auto i = static_cast<std::size_t>(random.between(0, static_cast<long long>(entry.attributes.size()) - 1));
    const std::string name = entry.attributes[i].name;
    const bool hides_global = find_attribute(model.globals, name) != nullptr;
    if (hides_global || refers_to(entry, name) || name == entry.selector.attribute) return std::nullopt;
    if (!change(entry, i)) return std::nullopt;
    return Place{entry.id, name, 0};
  };
}

/// On a global attribute that no text needs.
Apply on_free_global(std::function<bool(DefinitionModel&, std::size_t)> change) {
  return [change](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
    if (model.globals.empty()) return std::nullopt;
    const auto i = static_cast<std::size_t>(random.between(0, static_cast<long long>(model.globals.size()) - 1));
    const std::string name = model.globals[i].name;
    const bool is_used = std::any_of(model.entries.begin(), model.entries.end(),
                                     [&](const EntryDefinition& entry) { return refers_to(entry, name); });
    if (is_used || !change(model, i)) return std::nullopt;
    return Place{0, name, 0};
  };
}

bool becomes(AttributeDefinition& attribute, qz_AttributeType before, qz_AttributeType after) {
  if (attribute.type != before) return false;
  attribute.type = after;
  return true;
}

Apply retype(qz_AttributeType before, qz_AttributeType after) {
  const Apply own = on_free_attribute(
      [=](EntryDefinition& entry, std::size_t i) { return becomes(entry.attributes[i], before, after); });
  const Apply global =
      on_free_global([=](DefinitionModel& model, std::size_t i) { return becomes(model.globals[i], before, after); });
  return [=](DefinitionModel& model, SeededRandom& random) { return (random.one_in(2) ? own : global)(model, random); };
}

Apply renamed(Apply apply, std::string name) {
  return [=](DefinitionModel& model, SeededRandom& random) {
    std::optional<Place> place = apply(model, random);
    if (place) place->attribute = name;
    return place;
  };
}

bool replace_first(std::string& text, std::string_view what, std::string_view with) {
  const std::size_t found = text.find(what);
  if (found == std::string::npos) return false;
  text.replace(found, what.size(), with);
  return true;
}

/// Asks for a format of the first integer in the text.
bool set_format(EntryDefinition& entry, MessageText& text, std::string_view format) {
  for (const AttributeDefinition& attribute : entry.attributes) {
    const bool is_integer = attribute.type >= TypeUInt1 && attribute.type <= TypeSInt4;
    // Every reference of the attribute keeps its format but the first one; one alone makes the change certain.
    if (!is_integer ||
        text.written.find(placeholder(attribute.name)) != text.written.rfind(placeholder(attribute.name)))
      continue;
    if (replace_first(text.written, placeholder(attribute.name), '{' + attribute.name + std::string(format) + '}')) {
      return true;
    }
  }
  return false;
}

/// Uncovers a global attribute of the same type.
std::optional<Place> remove_hiding_attribute(const DefinitionModel& model, EntryDefinition& entry) {
  for (std::size_t i = 0; i < entry.attributes.size(); ++i) {
    const AttributeDefinition attribute = entry.attributes[i];
    const AttributeDefinition* const global = find_attribute(model.globals, attribute.name);
    if (global == nullptr || global->type != attribute.type) continue;
    entry.attributes.erase(entry.attributes.begin() + static_cast<std::ptrdiff_t>(i));
    return Place{entry.id, attribute.name, 0};
  }
  return std::nullopt;
}

void add_entry_mutations(std::vector<Mutation>& list) {
  list.push_back({DiffRule::kEntryAdded, "", Known::kEverywhere, [](DefinitionModel& model, SeededRandom& random) {
                    model.entries.push_back(random_entry(77, {}, random));
                    std::swap(model.entries.back(), pick(model.entries, random));
                    return std::optional(Place{770, "", 0});
                  }});
  list.push_back({DiffRule::kEntryRemoved, "source binary extension", Known::kEverywhere,
                  [](DefinitionModel& model, SeededRandom& random) {
                    std::swap(model.entries.back(), pick(model.entries, random));
                    const std::uint32_t id = model.entries.back().id;
                    model.entries.pop_back();
                    return std::optional(Place{id, "", 0});
                  }});
  list.push_back({DiffRule::kEntryRenamed, "source", Known::kWithNames,
                  on_entry([](EntryDefinition& entry, SeededRandom&) { return !(entry.name += "_NEW").empty(); })});
  list.push_back({DiffRule::kEntryRenumbered, "source binary extension", Known::kWithNames,
                  on_entry([](EntryDefinition& entry, SeededRandom&) { return (entry.id += 5) != 0; })});
  list.push_back({DiffRule::kSummaryChanged, "", Known::kWithNames,
                  on_entry([](EntryDefinition& entry, SeededRandom&) { return !(entry.summary += ".").empty(); })});
  list.push_back({DiffRule::kMaskChanged, "filter", Known::kEverywhere,
                  on_entry([](EntryDefinition& entry, SeededRandom&) { return (entry.mask ^= 0x4000000) != 0; })});
  list.push_back({DiffRule::kWordChanged, "", Known::kEverywhere,
                  on_entry([](EntryDefinition& entry, SeededRandom&) { return ++entry.word != 0; })});
  list.push_back({DiffRule::kMessageIdChanged, "render translation", Known::kEverywhere,
                  on_entry([](EntryDefinition& entry, SeededRandom&) { return !(entry.message_id += "x").empty(); })});
  list.push_back({DiffRule::kMessageIdChanged, "render translation", Known::kEverywhere,
                  on_selector_message([](SelectorMessage& message) { message.id += "x"; })});
}

void add_text_mutations(std::vector<Mutation>& list) {
  list.push_back({DiffRule::kTextChanged, "render translation", Known::kEverywhere,
                  on_text([](EntryDefinition&, MessageText& text, SeededRandom&) {
                    return replace_first(text.written, "begin", "start");
                  })});
  list.push_back({DiffRule::kTextWhiteSpaceChanged, "translation", Known::kEverywhere,
                  on_text([](EntryDefinition&, MessageText& text, SeededRandom&) {
                    return replace_first(text.written, " ", "  ");
                  })});
  list.push_back({DiffRule::kTextReferencesChanged, "render translation", Known::kEverywhere,
                  on_text([](EntryDefinition& entry, MessageText& text, SeededRandom& random) {
                    if (entry.attributes.empty()) return false;
                    const std::string& name = pick(entry.attributes, random).name;
                    if (refers_to(text, name)) return false;
                    text.written += " new " + placeholder(name);
                    return true;
                  })});
  list.push_back({DiffRule::kTextReferencesChanged, "render translation", Known::kEverywhere,
                  on_text([](EntryDefinition& entry, MessageText& text, SeededRandom& random) {
                    if (entry.attributes.empty()) return false;
                    const std::string& name = pick(entry.attributes, random).name;
                    return replace_first(text.written, placeholder(name), "gone") && !refers_to(text, name);
                  })});
  list.push_back({DiffRule::kTextFormatsChanged, "render translation", Known::kEverywhere,
                  on_text([](EntryDefinition& entry, MessageText& text, SeededRandom&) {
                    return set_format(entry, text, ":P");
                  })});
  list.push_back({DiffRule::kTextNotationChanged, "", Known::kInSources,
                  on_text([](EntryDefinition& entry, MessageText& text, SeededRandom&) {
                    return set_format(entry, text, ":d");
                  })});
}

void add_attribute_mutations(std::vector<Mutation>& list) {
  list.push_back({DiffRule::kAttributeAdded, "", Known::kEverywhere,
                  renamed(on_entry([](EntryDefinition& entry, SeededRandom& random) {
                            const auto place = random.between(0, static_cast<long long>(entry.attributes.size()));
                            entry.attributes.insert(entry.attributes.begin() + place, {"New", TypeFloat, "", {}});
                            return true;
                          }),
                          "New")});
  list.push_back({DiffRule::kAttributeRemoved, "source binary extension", Known::kEverywhere,
                  on_free_attribute([](EntryDefinition& entry, std::size_t i) {
                    entry.attributes.erase(entry.attributes.begin() + static_cast<std::ptrdiff_t>(i));
                    return true;
                  })});
  list.push_back({DiffRule::kAttributeMadeOwn, "", Known::kEverywhere,
                  [](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
                    if (model.globals.empty()) return std::nullopt;
                    EntryDefinition& entry = pick(model.entries, random);
                    const AttributeDefinition& global = pick(model.globals, random);
                    if (find_attribute(entry.attributes, global.name) != nullptr) return std::nullopt;
                    entry.attributes.push_back(global);
                    return Place{entry.id, global.name, 0};
                  }});
  list.push_back({DiffRule::kAttributeMadeGlobal, "", Known::kEverywhere,
                  [](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
                    EntryDefinition& entry = pick(model.entries, random);
                    return remove_hiding_attribute(model, entry);
                  }});
  list.push_back({DiffRule::kAttributeRenamed, "source binary extension", Known::kEverywhere,
                  renamed(on_free_attribute([](EntryDefinition& entry, std::size_t i) {
                            entry.attributes[i].name = "New";
                            return true;
                          }),
                          "New")});
  list.push_back({DiffRule::kAttributeOrderChanged, "source", Known::kEverywhere,
                  on_entry([](EntryDefinition& entry, SeededRandom&) {
                    if (entry.attributes.size() < 2) return false;
                    std::swap(entry.attributes.front(), entry.attributes.back());
                    return true;
                  })});
  list.push_back({DiffRule::kRedirectChanged, "binary", Known::kEverywhere,
                  on_free_attribute([](EntryDefinition& entry, std::size_t i) {
                    std::string& redirect = entry.attributes[i].redirect;
                    redirect = redirect.empty() ? "to" : "";
                    return true;
                  })});
  list.push_back({DiffRule::kSensitivityChanged, "render", Known::kWithNames,
                  on_free_attribute([](EntryDefinition& entry, std::size_t i) {
                    entry.attributes[i].sensitivity = qzlog::Sensitivity::kDrop;
                    return true;
                  })});
  list.push_back({DiffRule::kSensitivityChanged, "render", Known::kWithNames,
                  on_free_global([](DefinitionModel& model, std::size_t i) {
                    model.globals[i].sensitivity = qzlog::Sensitivity::kHash;
                    return true;
                  })});
}

void add_type_mutations(std::vector<Mutation>& list) {
  const auto add = [&list](DiffRule rule, const char* verdicts, qz_AttributeType before, qz_AttributeType after) {
    list.push_back({rule, verdicts, Known::kEverywhere, retype(before, after)});
  };
  add(DiffRule::kNumberWidened, "source", TypeUInt1, TypeUInt2);
  add(DiffRule::kNumberWidened, "source", TypeUInt2, TypeSInt4);
  add(DiffRule::kNumberNarrowed, "source binary", TypeUInt4, TypeSInt4);
  add(DiffRule::kNumberNarrowed, "source binary", TypeSInt4, TypeSInt1);
  add(DiffRule::kTextLimitRaised, "", TypeChar32, TypeChar64);
  add(DiffRule::kTextLimitRaised, "", TypeMBChar32, TypeMBChar2K);
  add(DiffRule::kTextLimitLowered, "source binary", TypeChar256, TypeChar32);
  add(DiffRule::kTimeKindChanged, "binary render", TypeDate, TypeTimestamp);
  add(DiffRule::kTypeChanged, "source binary render", TypeBool, TypeUInt1);
  add(DiffRule::kTypeChanged, "source binary render", TypeChar32, TypeMBChar32);
  add(DiffRule::kTypeChanged, "source binary render", TypeFloat, TypeGUID);
}

void add_global_mutations(std::vector<Mutation>& list) {
  list.push_back({DiffRule::kGlobalAdded, "", Known::kEverywhere, [](DefinitionModel& model, SeededRandom&) {
                    model.globals.insert(model.globals.begin(), {"NEW", TypeFloat, "", {}});
                    return std::optional(Place{0, "NEW", 0});
                  }});
  list.push_back({DiffRule::kGlobalRemoved, "source binary extension", Known::kEverywhere,
                  on_free_global([](DefinitionModel& model, std::size_t i) {
                    model.globals.erase(model.globals.begin() + static_cast<std::ptrdiff_t>(i));
                    return true;
                  })});
  list.push_back({DiffRule::kGlobalRenamed, "source binary extension", Known::kEverywhere,
                  renamed(on_free_global([](DefinitionModel& model, std::size_t i) {
                            model.globals[i].name = "NEW";
                            return true;
                          }),
                          "NEW")});
  list.push_back({DiffRule::kGlobalRedirectChanged, "", Known::kEverywhere,
                  on_free_global([](DefinitionModel& model, std::size_t i) {
                    model.globals[i].redirect = "to";
                    return true;
                  })});
  list.push_back({DiffRule::kGlobalOrderChanged, "", Known::kEverywhere,
                  [](DefinitionModel& model, SeededRandom&) -> std::optional<Place> {
                    if (model.globals.size() < 2) return std::nullopt;
                    std::swap(model.globals.front(), model.globals.back());
                    return Place();
                  }});
}

void add_selector_mutations(std::vector<Mutation>& list) {
  list.push_back({DiffRule::kSelectorAdded, "render", Known::kEverywhere,
                  on_entry([](EntryDefinition& entry, SeededRandom& random) {
                    if (entry.attributes.empty() || !entry.selector.attribute.empty()) return false;
                    entry.selector.attribute = entry.attributes.front().name;
                    entry.selector.messages.push_back(
                        {1, 1, "key", random_text(entry.attributes, random), kInASource, kInASource});
                    return true;
                  })});
  list.push_back({DiffRule::kSelectorRemoved, "source render extension", Known::kEverywhere,
                  on_entry([](EntryDefinition& entry, SeededRandom&) {
                    return !std::exchange(entry.selector, {}).attribute.empty();
                  })});
  list.push_back({DiffRule::kSelectorAttributeChanged, "render extension", Known::kEverywhere,
                  on_entry([](EntryDefinition& entry, SeededRandom&) {
                    if (entry.selector.attribute.empty()) return false;
                    entry.selector.attribute = entry.attributes.front().name;
                    return entry.selector.attribute != "Chooser";
                  })});
  list.push_back({DiffRule::kSelectorMessageAdded, "render", Known::kEverywhere,
                  [](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
                    EntryDefinition& entry = pick(model.entries, random);
                    if (entry.selector.attribute.empty()) return std::nullopt;
                    entry.selector.messages.insert(
                        entry.selector.messages.begin(),
                        {50, 5000, "new", random_text(entry.attributes, random), kInASource, kInASource});
                    return Place{entry.id, "", 50};
                  }});
  list.push_back({DiffRule::kSelectorMessageRemoved, "source render", Known::kEverywhere,
                  [](DefinitionModel& model, SeededRandom& random) -> std::optional<Place> {
                    EntryDefinition& entry = pick(model.entries, random);
                    if (entry.selector.messages.empty()) return std::nullopt;
                    const std::uint32_t index = entry.selector.messages.back().index;
                    entry.selector.messages.pop_back();
                    return Place{entry.id, "", index};
                  }});
  list.push_back({DiffRule::kSelectorIndexChanged, "source", Known::kEverywhere,
                  on_selector_message([](SelectorMessage& message) { message.index += 30; })});
  list.push_back({DiffRule::kSelectorValueChanged, "render", Known::kEverywhere,
                  on_selector_message([](SelectorMessage& message) { message.value += 30; })});
}

}  // namespace

DefinitionModel random_model(SeededRandom& random) {
  DefinitionModel model;
  model.version = "2.5";
  model.has_names = true;
  for (long long i = random.between(0, 4); i > 0; --i) {
    model.globals.push_back({"G" + std::to_string(i), pick(kTypes, random), "", {}});
  }
  for (std::uint32_t i = 1; i <= static_cast<std::uint32_t>(random.between(1, 8)); ++i) {
    model.entries.push_back(random_entry(i, model.globals, random));
  }
  return model;
}

DefinitionModel lowered(DefinitionModel model) {
  for (EntryDefinition& entry : model.entries) {
    const AttributeLookup types = [&](std::string_view name) -> std::optional<qz_AttributeType> {
      if (const auto* const own = find_attribute(entry.attributes, name)) return own->type;
      const auto* const global = find_attribute(model.globals, name);
      return global == nullptr ? std::nullopt : std::optional(global->type);
    };
    const auto lower = [&](MessageText& text) {
      text.stored = lower_message(text.written, types, RenderingPaths::kIcu).stored;
      EXPECT_NE(text.stored, "") << text.written;
    };
    lower(entry.message);
    for (SelectorMessage& message : entry.selector.messages) lower(message.message);
  }
  return model;
}

std::vector<Mutation> all_mutations() {
  std::vector<Mutation> list;
  add_entry_mutations(list);
  add_text_mutations(list);
  add_attribute_mutations(list);
  add_type_mutations(list);
  add_global_mutations(list);
  add_selector_mutations(list);
  return list;
}

}  // namespace diff_mutations
