#ifndef QZLOG_TESTS_TOOLS_COMPILER_RANDOM_STORED_MODEL_H
#define QZLOG_TESTS_TOOLS_COMPILER_RANDOM_STORED_MODEL_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

/// Models that a definition source can say, with texts that are hard to write down.
class RandomStoredModel {
 public:
  explicit RandomStoredModel(qz_test::SeededRandom& random) : random_(random) {}

  DefinitionModel make() {
    DefinitionModel model;
    model.version = std::to_string(random_.between(0, 99)) + "." + std::to_string(random_.between(0, 99999));
    model.globals = attributes(4);
    std::set<std::uint32_t> ids;
    while (ids.size() < static_cast<std::size_t>(random_.between(0, 6))) ids.insert(number());
    for (const std::uint32_t id : ids) model.entries.push_back(entry(id));
    return model;
  }

  /// Gives the entries names and some of them summaries, and marks some of the attributes.
  void name_everything(DefinitionModel& model) {
    model.has_names = true;
    mark(model.globals);
    for (EntryDefinition& entry : model.entries) {
      entry.name = "E_" + std::to_string(entry.id);
      if (random_.one_in(2)) entry.summary = text();
      mark(entry.attributes);
    }
  }

  /// UTF-8 without zero bytes, with every character that a source could lose.
  std::string text(long long longest = 12) {
    static constexpr std::string_view kPieces[] = {
        " ",      "\t",     "\n",     "\r",     "\r\n",   "\x01",   "\x1B",       "\x7F",       "\u0085", "\u009F",
        "\u00A0", "\u2028", "\u2029", "\uFEFF", "\uFFFE", "\uFFFF", "\U0010FFFF", "\U0001F600", "ä",      "漢",
        "'",      "''",     "\"",     "\\",     "\\n",    ": ",     " #",         "- ",         "%s%N%",  "%%",
        "{",      "}",      "[",      "]",      ",",      "&",      "*",          "!",          "|",      ">",
        "@",      "`",      "~",      "null",   "0x10",   "a",      "word",       "..."};
    std::string made;
    for (long long count = random_.between(0, longest); count > 0; --count) {
      made += kPieces[random_.between(0, std::size(kPieces) - 1)];
    }
    if (random_.one_in(50)) made += std::string(3000, 'x');
    return made;
  }

 private:
  void mark(std::vector<AttributeDefinition>& attributes) {
    for (AttributeDefinition& attribute : attributes) {
      const bool can_be_hashed = attribute.type >= TypeChar32 && attribute.type <= TypeMBChar2K;
      if (random_.one_in(3)) attribute.sensitivity = qzlog::Sensitivity::kDrop;
      if (random_.one_in(3) && can_be_hashed) attribute.sensitivity = qzlog::Sensitivity::kHash;
    }
  }

  std::uint32_t number() {
    return static_cast<std::uint32_t>(random_.one_in(2) ? random_.between(0, 9) : random_.between(0, 0xFFFFFFFF));
  }

  std::string name() {
    std::string made;
    for (const char character : text(3)) {
      if (std::string_view("%{}:").find(character) == std::string_view::npos) made += character;
    }
    return made.empty() ? "n" : made;
  }

  std::vector<AttributeDefinition> attributes(long long most) {
    std::vector<AttributeDefinition> made;
    std::set<std::string> names;
    for (long long count = random_.between(0, most); count > 0; --count) {
      AttributeDefinition attribute;
      attribute.name = name();
      attribute.type = static_cast<qz_AttributeType>(random_.between(TypeBool, TypeGUID));
      if (random_.one_in(2)) attribute.redirect = text(3);
      if (names.insert(attribute.name).second) made.push_back(attribute);
    }
    return made;
  }

  EntryDefinition entry(std::uint32_t id) {
    EntryDefinition made;
    made.id = id;
    made.mask = number();
    made.word = number();
    made.message_id = random_.one_in(3) ? "DISK_FULL" : random_.one_in(2) ? "disk.full" : text();
    made.message.stored = text();
    made.attributes = attributes(5);
    if (random_.one_in(3)) return made;
    if (random_.one_in(2)) {
      made.attributes.push_back({"the selector", TypeUInt2, "", {}});
      made.selector.attribute = "the selector";
    }
    for (std::uint32_t i = 0, count = static_cast<std::uint32_t>(random_.between(0, 3)); i < count; ++i) {
      made.selector.messages.push_back({i * 7, i, text(), {}, {}, {}});
      made.selector.messages.back().message.stored = text();
    }
    return made;
  }

  qz_test::SeededRandom& random_;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TESTS_TOOLS_COMPILER_RANDOM_STORED_MODEL_H
