#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/tools/compiler/rendering_oracle.h"
#include "tools/compiler/message_lowering.h"

namespace qzlog_compiler {
namespace {

using rendering_oracle::render_icu;
using rendering_oracle::render_narrow;

// Values with everything in them that means something in a template or a pattern.
const rendering_oracle::Values kValues = {
    {"A", {{'s', "v'1{0}%s%A%''"}}},
    {"Größe n", {{'s', "groß"}}},
    {"Free", {{'d', "42"}, {'u', "42"}, {'C', "$42"}, {'P', "4200%"}}},
    {"Load", {{'f', "0.5"}, {'C', "$.5"}, {'P', "50%"}}},
    {"Day", {{'D', "2026-11-21"}, {'T', "00:00"}}},
    {"At", {{'D', "2026-11-21"}, {'T', "08:15"}}},
    {"漢字の名", {{'s', "kanji"}}},
    {"TIMESTAMP", {{'D', "21 Nov"}, {'T', "8 o'clock"}}},
};

std::optional<qz_AttributeType> find_type(std::string_view name) {
  if (name == "A" || name == "Größe n" || name == "漢字の名") return TypeChar64;
  if (name == "Free") return TypeUInt4;
  if (name == "Load") return TypeFloat;
  if (name == "Day") return TypeDate;
  if (name == "At") return TypeTimestamp;
  return std::nullopt;
}

/// A message as its author thinks of it: pieces of text and references.
struct Message {
  std::string written;
  std::string expected;
  bool leading_percent = false;
  bool later_percent = false;
  bool neighbours = false;
  bool long_name = false;
  std::size_t references = 0;

  bool icu_can_show() const { return !later_percent && !neighbours && !long_name && references <= 10; }
  bool narrow_can_show() const { return !later_percent && !neighbours && !leading_percent; }
};

class MessageMaker {
 public:
  explicit MessageMaker(unsigned seed) : random_(seed) {}

  Message make() {
    Message message;
    const std::size_t pieces = pick(14);
    bool after_reference = false;
    for (std::size_t i = 0; i < pieces; ++i) {
      const bool reference = pick(2) == 0;
      if (reference) {
        message.neighbours = message.neighbours || after_reference;
        add_reference(message);
        after_reference = true;
      } else if (add_literal(message)) {
        after_reference = false;
      }
    }
    return message;
  }

 private:
  std::size_t pick(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_); }

  /// False when it added nothing.
  bool add_literal(Message& message) {
    static const std::array<std::string, 16> kCharacters = {"{", "}",  "'", "{",  "'", "}", "a",      " ",
                                                            "é", "漢", "😀", "\n", "#", "|", "\uFEFF", "_"};
    const std::size_t length = pick(5);
    for (std::size_t i = 0; i < length; ++i) {
      std::string character = kCharacters[pick(kCharacters.size())];
      if (pick(message.written.empty() ? 8 : 60) == 0) character = "%";
      if (character == "%") {
        const bool at_start = message.expected.find_first_not_of('%') == std::string::npos && message.references == 0;
        (at_start ? message.leading_percent : message.later_percent) = true;
      }
      message.written += character == "{" || character == "}" ? character + character : character;
      message.expected += character;
    }
    return length != 0;
  }

  void add_reference(Message& message) {
    static const std::array<std::string, 8> kReferences = {"A",   "Größe n", "Free",     "Load",
                                                           "Day", "At",      "漢字の名", "TIMESTAMP"};
    std::size_t choice = pick(kReferences.size());
    if (choice == 6 && pick(8) != 0) choice = 0;  // the name that ICU cannot take stays rare
    const std::string& name = kReferences[choice];
    const auto& formats = kValues.at(name);
    const bool named_format = pick(3) == 0;
    if (named_format) {
      const auto format = std::next(formats.begin(), static_cast<std::ptrdiff_t>(pick(formats.size())));
      message.written += "{" + name + ":" + format->first + "}";
      message.expected += format->second;
      message.references += 1;
    } else {
      message.written += "{" + name + "}";
      message.expected += default_text(name, formats);
      message.references += name == "At" || name == "TIMESTAMP" ? 2 : 1;
    }
    message.long_name = message.long_name || name == "漢字の名";
  }

  static std::string default_text(const std::string& name, const std::map<char, std::string>& formats) {
    if (name == "At" || name == "TIMESTAMP") return formats.at('D') + " " + formats.at('T');
    if (name == "Free") return formats.at('d');
    if (name == "Load") return formats.at('f');
    if (name == "Day") return formats.at('D');
    return formats.at('s');
  }

  std::mt19937 random_;
};

bool has(const LoweredMessage& lowered, Severity severity) {
  return std::any_of(lowered.findings.begin(), lowered.findings.end(),
                     [severity](const MessageFinding& finding) { return finding.severity == severity; });
}

void check_icu(const Message& message) {
  const LoweredMessage lowered = lower_message(message.written, find_type, MessagePath::kIcu);
  EXPECT_EQ(lowered.findings.empty(), message.icu_can_show());
  EXPECT_EQ(has(lowered, Severity::kError), !message.icu_can_show());
  if (!lowered.findings.empty()) return;
  EXPECT_EQ(render_icu(lowered.stored, kValues), message.expected);
}

void check_narrow(const Message& message) {
  const LoweredMessage lowered = lower_message(message.written, find_type, MessagePath::kNarrow);
  EXPECT_EQ(lowered.findings.empty(), message.narrow_can_show());
  EXPECT_EQ(has(lowered, Severity::kError), !message.narrow_can_show());
  if (!lowered.findings.empty()) return;
  EXPECT_EQ(render_narrow(lowered.stored, kValues), message.expected);
}

void check_both(const Message& message) {
  const LoweredMessage lowered = lower_message(message.written, find_type, MessagePath::kBoth);
  const bool shown = message.icu_can_show() || message.narrow_can_show();
  EXPECT_EQ(has(lowered, Severity::kError), !shown);
  if (!shown) return;
  const bool on_icu = render_icu(lowered.stored, kValues) == message.expected;
  const bool on_narrow = render_narrow(lowered.stored, kValues) == message.expected;
  // A warning is given exactly when one path does not show the text, and then the other one does.
  EXPECT_EQ(lowered.findings.empty(), on_icu && on_narrow);
  EXPECT_EQ(on_icu, message.icu_can_show());
  EXPECT_TRUE(on_icu || on_narrow);
}

TEST(LowerMessageRandom, AnyText_IsShownAsWrittenOrDiagnosed) {
  const unsigned seed = std::random_device{}();
  std::cout << "seed " << seed << '\n';
  MessageMaker maker(seed);
  for (int i = 0; i < 20000 && !::testing::Test::HasFailure(); ++i) {
    const Message message = maker.make();
    SCOPED_TRACE("seed " + std::to_string(seed) + ", text: " + message.written);
    check_icu(message);
    check_narrow(message);
    check_both(message);
  }
}

/// Every text over the characters that matter, up to a length, with and without a reference behind it.
TEST(LowerMessageRandom, EveryShortTextOfSyntax_IsShownAsWritten) {
  const std::string alphabet = "{}'a";
  std::vector<std::string> texts = {""};
  for (std::size_t begin = 0, length = 0; length < 6; ++length) {
    const std::size_t end = texts.size();
    for (; begin < end; ++begin) {
      for (const char character : alphabet) texts.push_back(texts[begin] + character);
    }
  }
  for (const std::string& text : texts) {
    std::string written;
    for (const char character : text) written.append(character == '{' || character == '}' ? 2 : 1, character);
    const LoweredMessage alone = lower_message(written, find_type, MessagePath::kIcu);
    ASSERT_EQ(render_icu(alone.stored, kValues), text) << alone.stored;
    const LoweredMessage before = lower_message(written + "{Free}", find_type, MessagePath::kIcu);
    ASSERT_EQ(render_icu(before.stored, kValues), text + "42") << before.stored;
    const LoweredMessage after = lower_message("{Free}" + written, find_type, MessagePath::kIcu);
    ASSERT_EQ(render_icu(after.stored, kValues), "42" + text) << after.stored;
  }
}

}  // namespace
}  // namespace qzlog_compiler
