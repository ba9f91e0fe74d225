#include "tools/compiler/source/entry_loader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <unordered_map>
#include <utility>

#include "tools/compiler/message/message_references.h"
#include "tools/compiler/message/stored_template.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/source/scalar_position.h"
#include "tools/compiler/source/scalar_values.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

constexpr std::array<KnownKey, 11> kEntryFields = {{{"id", true},
                                                    {"name", true},
                                                    {"summary"},
                                                    {"mask"},
                                                    {"word"},
                                                    {"message"},
                                                    {"raw"},
                                                    {"message_id"},
                                                    {"attributes"},
                                                    {"accept"},
                                                    {"selector"}}};
// Without an attribute the messages are there for callers who ask for them by index.
constexpr std::array<KnownKey, 2> kSelectorFields = {{{"attribute"}, {"messages", true}}};
constexpr std::array<KnownKey, 6> kSelectorMessageFields = {
    {{"index", true}, {"value", true}, {"id", true}, {"text"}, {"raw"}, {"accept"}}};

constexpr std::uint32_t kDefaultMask = 1;

/// Reports numbers that stand twice in an entry's selector messages.
class UniqueNumbers {
 public:
  UniqueNumbers(Rule rule, std::string_view what, Findings& diagnostics)
      : rule_(rule), what_(what), diagnostics_(diagnostics) {}

  void check(std::uint32_t number, SourcePosition position) {
    if (!position.known()) return;
    const auto [place, added] = places_.try_emplace(number, position);
    if (added) return;
    diagnostics_
        .error(position, rule_,
               "the " + std::string(what_) + " " + std::to_string(number) +
                   " belongs to another selector message of the entry")
        .with_note(place->second, "the first is here");
  }

 private:
  Rule rule_;
  std::string_view what_;
  Findings& diagnostics_;
  std::unordered_map<std::uint32_t, SourcePosition> places_;
};

}  // namespace

LoadedEntry EntryLoader::load(const YamlNode& node) {
  loaded_ = {};
  names_ = {};
  standard_entry_ = nullptr;
  loaded_.entry.position = node.position();
  const MappingFields fields(node, kEntryFields, "an entry", diagnostics());
  if (!fields.is_mapping()) return std::move(loaded_);
  load_names(fields);
  load_numbers(fields);
  if (const YamlNode* const attributes = fields.find("attributes")) {
    loaded_.entry.attributes = load_attribute_list(*attributes, AttributeListKind::kOwn, names_, diagnostics());
  }
  load_messages(fields, node);
  if (const YamlNode* const selector = fields.find("selector")) load_selector(*selector);
  load_accept(fields, AcceptScope::kEntry, node);
  return std::move(loaded_);
}

void EntryLoader::load_accept(const MappingFields& fields, AcceptScope scope, const YamlNode& node) {
  const YamlNode* const accept = fields.find("accept");
  if (accept != nullptr) context_.accepted->load(*accept, scope, node, diagnostics());
}

void EntryLoader::load_names(const MappingFields& fields) {
  EntryDefinition& entry = loaded_.entry;
  if (const YamlNode* const name = fields.find("name")) {
    entry.name = read_entry_name(*name, diagnostics()).value_or("");
    entry.name_position = name->position();
  }
  if (const YamlNode* const summary = fields.find("summary")) {
    entry.summary = read_text(*summary, "the entry's summary", diagnostics()).value_or("");
  }
}

void EntryLoader::load_numbers(const MappingFields& fields) {
  EntryDefinition& entry = loaded_.entry;
  const std::optional<std::uint32_t> id = load_number(fields, "id", entry.position);
  loaded_.has_id = id.has_value();
  entry.id = id.value_or(0);
  if (id && context_.standard != nullptr) standard_entry_ = context_.standard->find_entry(*id);
  // A merge keeps the standard entry's mask, but takes the auxiliary record's word.
  const bool extends = standard_entry_ != nullptr;
  entry.mask = load_number(fields, "mask", entry.mask_position).value_or(extends ? 0 : kDefaultMask);
  entry.word = load_number(fields, "word", entry.word_position).value_or(extends ? standard_entry_->word : 0);
}

std::optional<std::uint32_t> EntryLoader::load_number(const MappingFields& fields, std::string_view key,
                                                      SourcePosition& position) {
  const YamlNode* const node = fields.find(key);
  if (node == nullptr) return std::nullopt;
  position = node->position();
  return read_number(*node, "the " + std::string(key), diagnostics());
}

void EntryLoader::load_messages(const MappingFields& fields, const YamlNode& node) {
  EntryDefinition& entry = loaded_.entry;
  const std::optional<MessageText> message = load_message(fields, "message");
  if (message) {
    entry.message = *message;
    entry.message_id = entry.name;
  } else if (standard_entry_ == nullptr) {
    diagnostics().error(node.position(), Rule::kMissingKey, "an entry lacks the key 'message' (or 'raw')");
  }
  if (const YamlNode* const id = fields.find("message_id")) {
    entry.message_id_position = id->position();
    entry.message_id = load_message_id(*id);
  }
}

std::string EntryLoader::load_message_id(const YamlNode& node) {
  const std::optional<std::string> id = read_text(node, "the message's catalog key", diagnostics());
  if (id && id->empty()) {
    diagnostics()
        .warning(node.position(), Rule::kEmptyMessageId,
                 "an empty catalog key: the message fails wherever a catalog is in use")
        .with_hint("name a key, such as the entry's name");
  }
  return id.value_or("");
}

std::optional<MessageText> EntryLoader::load_message(const MappingFields& fields, std::string_view key) {
  const YamlNode* const text = fields.find(key);
  const YamlNode* const raw = fields.find("raw");
  if (text == nullptr && raw == nullptr) return std::nullopt;
  if (text != nullptr && raw != nullptr) {
    diagnostics()
        .error(raw->position(), Rule::kConflictingKeys, "'" + std::string(key) + "' and 'raw' exclude each other")
        .with_note(text->position(), "the '" + std::string(key) + "' is here");
  }
  const YamlNode& node = text == nullptr ? *raw : *text;
  MessageText message{read_text(node, "a message text", diagnostics()).value_or(""), text == nullptr, "",
                      node.position()};
  if (message.raw) {
    message.stored = message.written;
    check_raw(message, node);
  } else {
    message.stored = lower(message, node);
  }
  ScalarPositions positions(context_.source, node);
  for (const WrittenReference& reference : written_references(message)) {
    message.references.push_back(positions.find(reference.offset));
  }
  return message;
}

// What else is wrong with a raw template is a warning. This throws what callers who catch the exceptions of logging let
// go.
void EntryLoader::check_raw(const MessageText& message, const YamlNode& node) {
  if (context_.path == RenderingPaths::kIcu || !ends_in_open_percent(message.stored)) return;
  diagnostics()
      .error(ScalarPositions(context_.source, node).find(message.stored.size() - 1), Rule::kLiteralPercent,
             "a percent sign ends the template, which the narrow path fails at")
      .with_hint("say it in words; the format P shows a number with a percent sign");
}

std::string EntryLoader::lower(const MessageText& message, const YamlNode& node) {
  LoweredMessage lowered = lower_message(
      message.written, [this](std::string_view name) { return find_type(name); }, context_.path);
  ScalarPositions positions(context_.source, node);
  for (MessageFinding& finding : lowered.findings) {
    if (finding.rule == Rule::kUnknownAttribute && suggestions_left_ != 0) {
      --suggestions_left_;
      const std::string nearest = did_you_mean(finding.name, known_names());
      if (!nearest.empty()) finding.hint = nearest;
    }
    diagnostics()
        .add(positions.find(finding.offset), finding.severity, finding.rule, std::move(finding.text))
        .with_hint(std::move(finding.hint));
  }
  return std::move(lowered.stored);
}

/// Everything that a message can refer to, sorted, since the nearest of them is shown.
std::vector<std::string_view> EntryLoader::known_names() const {
  std::vector<std::string_view> names(standard_field_names().begin(), standard_field_names().end());
  names_.append_to(names);
  context_.globals->append_to(names);
  if (standard_entry_ != nullptr) {
    for (const AttributeDefinition& attribute : standard_entry_->attributes) names.push_back(attribute.name);
  }
  if (context_.standard != nullptr) {
    for (const AttributeDefinition& global : context_.standard->model().globals) names.push_back(global.name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// Own attributes come before those that the standard entry adds, and before the global ones.
std::optional<qz_AttributeType> EntryLoader::find_type(std::string_view name) const {
  if (const std::optional<qz_AttributeType> own = names_.find(name)) return own;
  if (standard_entry_ != nullptr) {
    const AttributeDefinition* const attribute = find_attribute(standard_entry_->attributes, name);
    if (attribute != nullptr) return attribute->type;
  }
  if (const std::optional<qz_AttributeType> global = context_.globals->find(name)) return global;
  if (context_.standard == nullptr) return std::nullopt;
  const AttributeDefinition* const global = context_.standard->find_global(name);
  return global == nullptr ? std::nullopt : std::optional(global->type);
}

void EntryLoader::load_selector(const YamlNode& node) {
  const MappingFields fields(node, kSelectorFields, "a selector", diagnostics());
  Selector& selector = loaded_.entry.selector;
  selector.position = node.position();
  std::optional<std::uint32_t> value_limit;
  if (const YamlNode* const attribute = fields.find("attribute")) {
    selector.attribute = read_text(*attribute, "the selector's attribute", diagnostics()).value_or("");
    selector.position = attribute->position();
    value_limit = check_selector_attribute(*attribute);
  }
  if (const YamlNode* const messages = fields.find("messages")) load_selector_messages(*messages, value_limit);
}

/// Returns the largest value of the attribute, none where the attribute is in error.
std::optional<std::uint32_t> EntryLoader::check_selector_attribute(const YamlNode& node) {
  const std::string& name = loaded_.entry.selector.attribute;
  std::optional<qz_AttributeType> type = names_.find(name);
  if (!type && standard_entry_ != nullptr) {
    const AttributeDefinition* const inherited = find_attribute(standard_entry_->attributes, name);
    if (inherited != nullptr && inherited != selector_attribute(*standard_entry_)) {
      diagnostics()
          .error(node.position(), Rule::kUnknownSelectorAttribute,
                 quoted(name) + " is no selector in the standard definitions")
          .with_hint("list the attribute here again, with its type, to make it one");
      return std::nullopt;
    }
    if (inherited != nullptr) type = inherited->type;
  }
  if (!type) {
    std::vector<std::string_view> own_names;
    names_.append_to(own_names);
    std::sort(own_names.begin(), own_names.end());
    const std::string nearest = did_you_mean(name, own_names);
    diagnostics()
        .error(node.position(), Rule::kUnknownSelectorAttribute,
               "the entry has no attribute " + quoted(name) + " to select its messages by")
        .with_hint(nearest.empty() ? "a selector attribute is one of the entry's own attributes" : nearest);
    return std::nullopt;
  }
  const std::optional<std::uint32_t> limit = selector_value_limit(*type);
  if (!limit && *type != TypeUnknown) {
    diagnostics()
        .error(node.position(), Rule::kSelectorAttributeType,
               quoted(name) + " is " + std::string(short_type_name(*type)) + ", by which no message can be selected")
        .with_hint("a selector attribute is UInt1, UInt2 or UInt4");
  }
  return limit;
}

void EntryLoader::load_selector_messages(const YamlNode& list, std::optional<std::uint32_t> value_limit) {
  if (list.kind() != YamlKind::kSequence) {
    report_wrong_type(list, "a list of selector messages", diagnostics());
    return;
  }
  UniqueNumbers indexes(Rule::kDuplicateSelectorIndex, "index", diagnostics());
  UniqueNumbers values(Rule::kDuplicateSelectorValue, "value", diagnostics());
  std::vector<SelectorMessage>& messages = loaded_.entry.selector.messages;
  SourcePosition surplus;
  list.for_each_item([&](const YamlNode& item) {
    if (messages.size() == kMaximumCount) surplus = item.position();
    messages.push_back(load_selector_message(item, value_limit));
    indexes.check(messages.back().index, messages.back().index_position);
    values.check(messages.back().value, messages.back().value_position);
  });
  if (!surplus.known()) return;
  diagnostics().error(surplus, Rule::kTooManySelectorMessages,
                      std::to_string(messages.size()) + " selector messages are too many; " +
                          std::to_string(kMaximumCount) + " are allowed");
}

SelectorMessage EntryLoader::load_selector_message(const YamlNode& node, std::optional<std::uint32_t> value_limit) {
  const MappingFields fields(node, kSelectorMessageFields, "a selector message", diagnostics());
  SelectorMessage message;
  const std::optional<std::uint32_t> index = load_number(fields, "index", message.index_position);
  const std::optional<std::uint32_t> value = load_number(fields, "value", message.value_position);
  message.index = index.value_or(0);
  message.value = value.value_or(0);
  if (!index) message.index_position = {};  // nothing to compare with others
  if (!value) message.value_position = {};
  if (value && message.value > value_limit.value_or(std::numeric_limits<std::uint32_t>::max())) {
    diagnostics().error(message.value_position, Rule::kSelectorValueRange,
                        "the value " + std::to_string(message.value) +
                            " is never met: the selector attribute holds at most " + std::to_string(*value_limit));
  }
  load_accept(fields, AcceptScope::kSelectorMessage, node);
  if (const YamlNode* const id = fields.find("id")) message.id = load_message_id(*id);
  const std::optional<MessageText> text = load_message(fields, "text");
  if (text) {
    message.message = *text;
  } else if (fields.is_mapping()) {
    diagnostics().error(node.position(), Rule::kMissingKey, "a selector message lacks the key 'text' (or 'raw')");
  }
  return message;
}

}  // namespace qzlog_compiler
