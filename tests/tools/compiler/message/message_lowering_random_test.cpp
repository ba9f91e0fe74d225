#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tests/tools/compiler/random_message.h"
#include "tests/tools/compiler/rendering_oracle.h"
#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/attribute_type.h"

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

/// A message with what its author would say about it.
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

std::string default_text(const std::string& name) {
  const auto& formats = kValues.at(name);
  if (name == "At" || name == "TIMESTAMP") return formats.at('D') + " " + formats.at('T');
  return formats.at(default_formats(*find_type(name)).front());
}

void note_percents(const std::string& text, bool at_start, Message& message) {
  const std::size_t leading = at_start ? std::min(text.find_first_not_of('%'), text.size()) : 0;
  message.leading_percent = message.leading_percent || leading != 0;
  message.later_percent = message.later_percent || text.find('%', leading) != std::string::npos;
}

void note_reference(const random_model::MessagePiece& reference, Message& message) {
  const bool two = reference.format == '\0' && (reference.text == "At" || reference.text == "TIMESTAMP");
  message.references += two ? 2 : 1;
  message.long_name = message.long_name || reference.text == "漢字の名";
}

Message make_message(qz_test::SeededRandom& random) {
  // The name that ICU cannot take is one of many, so that it stays rare.
  static const std::vector<random_model::Referable> kReferables = {
      {"A", TypeChar64},       {"A", TypeChar64},     {"Größe n", TypeChar64}, {"Free", TypeUInt4},
      {"Free", TypeUInt4},     {"Load", TypeFloat},   {"Load", TypeFloat},     {"Day", TypeDate},
      {"Day", TypeDate},       {"At", TypeTimestamp}, {"At", TypeTimestamp},   {"TIMESTAMP", TypeTimestamp},
      {"漢字の名", TypeChar64}};
  const random_model::MessagePieces pieces =
      random_model::random_message(random, kReferables, random_model::MessageKind::kAnything);
  Message message;
  message.written = random_model::written(pieces);
  message.expected = random_model::shown(pieces, [](const std::string& name, char format) {
    return format == '\0' ? default_text(name) : kValues.at(name).at(format);
  });
  bool after_reference = false;
  for (const random_model::MessagePiece& piece : pieces) {
    if (piece.is_reference) {
      note_reference(piece, message);
      message.neighbours = message.neighbours || after_reference;
    } else {
      note_percents(piece.text, &piece == pieces.data(), message);
    }
    after_reference = piece.is_reference;
  }
  return message;
}

bool has(const LoweredMessage& lowered, Severity severity) {
  return std::any_of(lowered.findings.begin(), lowered.findings.end(),
                     [severity](const MessageFinding& finding) { return finding.severity == severity; });
}

void check_icu(const Message& message) {
  const LoweredMessage lowered = lower_message(message.written, find_type, RenderingPaths::kIcu);
  EXPECT_EQ(lowered.findings.empty(), message.icu_can_show());
  EXPECT_EQ(has(lowered, Severity::kError), !message.icu_can_show());
  if (!lowered.findings.empty()) return;
  EXPECT_EQ(render_icu(lowered.stored, kValues), message.expected);
}

void check_narrow(const Message& message) {
  const LoweredMessage lowered = lower_message(message.written, find_type, RenderingPaths::kNarrow);
  EXPECT_EQ(lowered.findings.empty(), message.narrow_can_show());
  EXPECT_EQ(has(lowered, Severity::kError), !message.narrow_can_show());
  if (!lowered.findings.empty()) return;
  EXPECT_EQ(render_narrow(lowered.stored, kValues), message.expected);
}

void check_both(const Message& message) {
  const LoweredMessage lowered = lower_message(message.written, find_type, RenderingPaths::kBoth);
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
  qz_test::SeededRandom random;
  for (int i = 0; i < 20000 && !::testing::Test::HasFailure(); ++i) {
    const Message message = make_message(random);
    SCOPED_TRACE(message.written);
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
    const LoweredMessage alone = lower_message(written, find_type, RenderingPaths::kIcu);
    ASSERT_EQ(render_icu(alone.stored, kValues), text) << alone.stored;
    const LoweredMessage before = lower_message(written + "{Free}", find_type, RenderingPaths::kIcu);
    ASSERT_EQ(render_icu(before.stored, kValues), text + "42") << before.stored;
    const LoweredMessage after = lower_message("{Free}" + written, find_type, RenderingPaths::kIcu);
    ASSERT_EQ(render_icu(after.stored, kValues), "42" + text) << after.stored;
  }
}

}  // namespace
}  // namespace qzlog_compiler
