#include "tests/tools/compiler/random_model.h"

#include <array>
#include <cstdio>
#include <optional>
#include <set>

#include "tools/compiler/model/attribute_type.h"

namespace random_model {
namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::MessageText;
using qzlog_compiler::SelectorMessage;

const std::array<std::string, 8> kAttributeNames = {"Name", "Free", "Größe n", "x.y-z", "Имя", "漢字の名", "it's", "_"};
const std::array<std::string, 6> kTexts = {"", "plain", "it's \"quoted\" \\ back", "größer", "漢字", "two\nlines: #1"};

template <typename List>
const auto& one_of(qz_test::SeededRandom& random, const List& list) {
  return list[static_cast<std::size_t>(random.between(0, std::ssize(list) - 1))];
}

class ModelMaker {
 public:
  ModelMaker(qz_test::SeededRandom& random, const ModelOptions& options) : random_(random), options_(options) {}

  RandomModel make() {
    DefinitionModel& model = made_.model;
    model.version = std::to_string(random_.between(1, 99)) + "." + std::to_string(random_.between(0, 99));
    model.globals = make_attributes(5, false);
    if (random_.one_in(2)) model.globals.push_back({"PRODUCT_ID", TypeMBChar32, "", {}});
    for (std::size_t i = 0; i < options_.entries; ++i) model.entries.push_back(make_entry());
    return std::move(made_);
  }

 private:
  EntryDefinition make_entry() {
    EntryDefinition entry;
    entry.id = make_id();
    entry.name = "E" + std::to_string(made_.model.entries.size()) + (random_.one_in(2) ? "_X" : "");
    entry.summary = one_of(random_, kTexts);
    entry.mask = random_.one_in(3) ? 1 : number();
    entry.word = random_.one_in(2) ? 0 : number();
    entry.message_id = random_.one_in(2) ? entry.name : "id." + entry.name + ".é";
    entry.attributes = make_attributes(6, true);
    entry.message = make_message(entry, 0);
    if (random_.one_in(3)) add_selector(entry);
    return entry;
  }

  std::uint32_t number() { return static_cast<std::uint32_t>(random_.between(0, 0xFFFFFFFF)); }

  std::uint32_t make_id() {
    const std::array<std::uint32_t, 4> edges = {0, 1, 0x7FFFFFFF, 0xFFFFFFFF};
    for (;;) {
      const std::uint32_t id = random_.one_in(8) ? one_of(random_, edges) : number();
      if (ids_.insert(id).second) return id;
    }
  }

  std::vector<AttributeDefinition> make_attributes(long long maximum, bool own) {
    std::vector<AttributeDefinition> attributes;
    for (long long left = random_.between(0, maximum); left > 0; --left) {
      AttributeDefinition attribute;
      // A number makes the name unique, and the names of own and global attributes differ.
      attribute.name = one_of(random_, kAttributeNames) + (own ? " " : "") + std::to_string(attributes.size());
      attribute.type = static_cast<qz_AttributeType>(random_.between(TypeBool, TypeGUID));
      if (own && random_.one_in(4)) attribute.redirect = "to " + attribute.name;
      attributes.push_back(std::move(attribute));
    }
    return attributes;
  }

  MessageText make_message(const EntryDefinition& entry, std::uint32_t selector_index) {
    MessageText message;
    message.raw = options_.raw_templates && random_.one_in(8);
    if (message.raw) {
      message.written = raw_template(entry);
      return message;
    }
    const MessagePieces pieces = random_message(random_, referables(made_.model, entry), options_.messages);
    message.written = written(pieces);
    made_.messages[{entry.id, selector_index}] = pieces;
    return message;
  }

  static std::string raw_template(const EntryDefinition& entry) {
    for (const AttributeDefinition& attribute : entry.attributes) {
      const std::string_view formats = qzlog_compiler::accepted_formats(attribute.type);
      if (!formats.empty()) return std::string("raw %") + formats.front() + "%" + attribute.name + "%";
    }
    return "raw";
  }

  void add_selector(EntryDefinition& entry) {
    for (const AttributeDefinition& attribute : entry.attributes) {
      const std::optional<std::uint32_t> limit = qzlog_compiler::selector_value_limit(attribute.type);
      if (!limit) continue;
      entry.selector.attribute = attribute.name;
      add_selector_messages(entry, *limit);
      return;
    }
  }

  void add_selector_messages(EntryDefinition& entry, std::uint32_t limit) {
    std::set<std::uint32_t> values;
    for (std::uint32_t left = static_cast<std::uint32_t>(random_.between(1, 4)); left > 0; --left) {
      SelectorMessage message;
      message.index = left;
      do {
        message.value = static_cast<std::uint32_t>(random_.between(0, limit));
      } while (!values.insert(message.value).second);
      message.id = entry.name + "." + std::to_string(left);
      message.message = make_message(entry, left);
      entry.selector.messages.push_back(std::move(message));
    }
  }

  qz_test::SeededRandom& random_;
  ModelOptions options_;
  RandomModel made_;
  std::set<std::uint32_t> ids_;
};

/// Writes a model as block mappings for entries and flow mappings for what they hold.
class YamlWriter {
 public:
  explicit YamlWriter(qz_test::SeededRandom& random) : random_(random) {}

  std::string write(const DefinitionModel& model) {
    out_ = "version: " + text(model.version) + "\n";
    if (!model.globals.empty() || random_.one_in(2)) out_ += "globals: " + attributes(model.globals) + "\n";
    out_ += model.entries.empty() ? "entries: []\n" : "entries:\n";
    for (const EntryDefinition& entry : model.entries) write_entry(entry);
    return std::move(out_);
  }

 private:
  void write_entry(const EntryDefinition& entry) {
    out_ += "  - id: " + number(entry.id) + "\n    name: " + entry.name + "\n";
    if (!entry.summary.empty() || random_.one_in(4)) write_field("summary", text(entry.summary));
    if (entry.mask != 1 || random_.one_in(2)) write_field("mask", number(entry.mask));
    if (entry.word != 0 || random_.one_in(2)) write_field("word", number(entry.word));
    write_field(entry.message.raw ? "raw" : "message", text(entry.message.written));
    if (entry.message_id != entry.name || random_.one_in(2)) write_field("message_id", text(entry.message_id));
    if (!entry.attributes.empty() || random_.one_in(2)) write_field("attributes", attributes(entry.attributes));
    if (!entry.selector.attribute.empty()) write_selector(entry.selector);
  }

  void write_field(const std::string& key, const std::string& value) { out_ += "    " + key + ": " + value + "\n"; }

  void write_selector(const qzlog_compiler::Selector& selector) {
    out_ += "    selector:\n      attribute: " + text(selector.attribute) + "\n      messages:\n";
    for (const SelectorMessage& message : selector.messages) {
      out_ += "        - {index: " + number(message.index) + ", value: " + number(message.value) +
              ", id: " + text(message.id) + ", " + (message.message.raw ? "raw: " : "text: ") +
              text(message.message.written) + "}\n";
    }
  }

  std::string attributes(const std::vector<AttributeDefinition>& list) {
    std::string result;
    for (const AttributeDefinition& attribute : list) {
      result += result.empty() ? "[" : ", ";
      result += "{name: " + text(attribute.name) + ", type: " + (random_.one_in(2) ? "Type" : "") +
                std::string(qzlog_compiler::short_type_name(attribute.type));
      if (!attribute.redirect.empty()) result += ", redirect: " + text(attribute.redirect);
      result += "}";
    }
    return result.empty() ? "[]" : result + "]";
  }

  std::string number(std::uint32_t value) {
    if (random_.one_in(2)) return std::to_string(value);
    std::array<char, 16> hexadecimal{};
    std::snprintf(hexadecimal.data(), hexadecimal.size(), "0x%X", value);
    return hexadecimal.data();
  }

  std::string text(const std::string& value) {
    const bool needs_escapes = value.find('\n') != std::string::npos || value.find("\uFEFF") != std::string::npos;
    return needs_escapes || random_.one_in(2) ? double_quoted(value) : single_quoted(value);
  }

  static std::string single_quoted(const std::string& value) {
    std::string result = "'";
    for (const char byte : value) result.append(byte == '\'' ? 2 : 1, byte);
    return result + "'";
  }

  static std::string double_quoted(const std::string& value) {
    static const std::string kByteOrderMark = "\uFEFF";
    std::string result = "\"";
    for (std::size_t i = 0; i < value.size(); ++i) {
      if (value.compare(i, kByteOrderMark.size(), kByteOrderMark) == 0) {
        result += "\\uFEFF";
        i += kByteOrderMark.size() - 1;
      } else if (value[i] == '\n') {
        result += "\\n";
      } else {
        if (value[i] == '"' || value[i] == '\\') result += '\\';
        result += value[i];
      }
    }
    return result + "\"";
  }

  qz_test::SeededRandom& random_;
  std::string out_;
};

}  // namespace

RandomModel make_model(qz_test::SeededRandom& random, const ModelOptions& options) {
  return ModelMaker(random, options).make();
}

std::string to_yaml(const DefinitionModel& model, qz_test::SeededRandom& random) {
  return YamlWriter(random).write(model);
}

std::vector<Referable> referables(const DefinitionModel& model, const EntryDefinition& entry) {
  std::vector<Referable> result;
  for (const AttributeDefinition& attribute : entry.attributes) result.push_back({attribute.name, attribute.type});
  for (const AttributeDefinition& global : model.globals) result.push_back({global.name, global.type});
  result.push_back({"TIMESTAMP", TypeTimestamp});
  return result;
}

}  // namespace random_model
