#include "tools/diff/text_diff.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "tools/compiler/message/message_lowering.h"

namespace {

using namespace qzlog_compiler;

constexpr SourcePosition kInASource = {3, 5};

AttributeLookup types(qz_AttributeType count_type) {
  return [count_type](std::string_view name) -> std::optional<qz_AttributeType> {
    if (name == "Count") return count_type;
    if (name == "Name") return TypeChar32;
    return std::nullopt;
  };
}

MessageText message(const std::string& text, qz_AttributeType count_type = TypeUInt4) {
  return {text, false, lower_message(text, types(count_type), RenderingPaths::kBoth).stored, kInASource};
}

MessageText raw(const std::string& text) { return {text, true, text, kInASource}; }

MessageText compiled(const MessageText& source) { return {source.stored, true, source.stored, {}}; }

std::optional<DiffRule> rule(const MessageText& before, const MessageText& after, qz_AttributeType old_type = TypeUInt4,
                             qz_AttributeType new_type = TypeUInt4) {
  const std::optional<TextChange> change = compare_texts({&before, types(old_type)}, {&after, types(new_type)});
  return change ? std::optional(change->rule) : std::nullopt;
}

struct Case {
  const char* before;
  const char* after;
  std::optional<DiffRule> written;
  std::optional<DiffRule> compiled;
};

const Case kCases[] = {
    {"{Name} full", "{Name} full", std::nullopt, std::nullopt},
    {"", "", std::nullopt, std::nullopt},
    {"{Name} full", "{Name} empty", DiffRule::kTextChanged, DiffRule::kTextChanged},
    {"a {Name} b {Count} c", "a {Count} b {Name} c", DiffRule::kTextChanged, DiffRule::kTextChanged},
    {"{Name} and {Name}", "{Name} alone", DiffRule::kTextChanged, DiffRule::kTextChanged},
    {"{Name} full", "full", DiffRule::kTextReferencesChanged, DiffRule::kTextReferencesChanged},
    {"full", "{Name} full", DiffRule::kTextReferencesChanged, DiffRule::kTextReferencesChanged},
    {"{Name} x", "{Count} x", DiffRule::kTextReferencesChanged, DiffRule::kTextReferencesChanged},
    {"{Count} x", "{Count:P} y", DiffRule::kTextFormatsChanged, DiffRule::kTextFormatsChanged},
    {"a b", "a  b", DiffRule::kTextWhiteSpaceChanged, DiffRule::kTextWhiteSpaceChanged},
    {"a b", "a b ", DiffRule::kTextWhiteSpaceChanged, DiffRule::kTextWhiteSpaceChanged},
    {"a {Name}", " a\n{Name}", DiffRule::kTextWhiteSpaceChanged, DiffRule::kTextWhiteSpaceChanged},
    {"{Count} left", "{Count:d} left", DiffRule::kTextNotationChanged, std::nullopt},
};

TEST(CompareTexts, WrittenTexts_HaveTheirRule) {
  for (const Case& c : kCases) {
    EXPECT_EQ(rule(message(c.before), message(c.after)), c.written) << c.before << " -> " << c.after;
  }
}

TEST(CompareTexts, CompiledTexts_HaveTheirRule) {
  for (const Case& c : kCases) {
    const MessageText old_text = compiled(message(c.before));
    const MessageText new_text = compiled(message(c.after));
    EXPECT_EQ(rule(old_text, new_text), c.compiled) << c.before << " -> " << c.after;
    EXPECT_EQ(rule(old_text, message(c.after)), c.compiled) << c.before << " -> " << c.after;
  }
}

TEST(CompareTexts, DefaultFormatThatFollowedTheType_IsNoChange) {
  const MessageText number = message("{Count} left", TypeUInt4);
  const MessageText real = message("{Count} left", TypeFloat);
  EXPECT_EQ(rule(number, real, TypeUInt4, TypeFloat), std::nullopt);
  EXPECT_EQ(rule(compiled(number), compiled(real), TypeUInt4, TypeFloat), std::nullopt);
}

TEST(CompareTexts, FormatWrittenOutForAnotherType_IsAnotherNotation) {
  EXPECT_EQ(rule(message("{Count} left", TypeUInt4), message("{Count:f} left", TypeFloat), TypeUInt4, TypeFloat),
            DiffRule::kTextNotationChanged);
}

TEST(CompareTexts, RawTemplateOfTheSameText_IsAnotherNotation) {
  const MessageText text = message("{Name} full");
  EXPECT_EQ(rule(text, raw(text.stored)), DiffRule::kTextNotationChanged);
  EXPECT_EQ(rule(raw(text.stored), compiled(text)), std::nullopt);
}

TEST(CompareTexts, TheOtherFormatOfAnInteger_IsAnotherNotation) {
  EXPECT_EQ(rule(raw("%d%Count% left"), raw("%u%Count% left")), DiffRule::kTextNotationChanged);
  EXPECT_EQ(rule(raw("%u%Count% left%_%TIMESTAMP%"), message("{Count} left")), DiffRule::kTextNotationChanged);
}

TEST(CompareTexts, SkippedCharactersInAReference_AreAnotherNotation) {
  EXPECT_EQ(rule(raw("%d%Count%"), raw("%d10%Count%")), DiffRule::kTextNotationChanged);
}

TEST(CompareTexts, TextThatOnlyOnePathShows_Counts) {
  EXPECT_EQ(rule(raw("%s%Name% full"), raw("%s%Name% empty")), DiffRule::kTextChanged);
  EXPECT_EQ(rule(raw("a%%b"), raw("c%%b")), DiffRule::kTextNotationChanged);  // no path shows the text before
}

TEST(CompareTexts, Change_HoldsWhatWasComparedOnBothSides) {
  const MessageText before = message("{Name} full");
  const MessageText after = message("{Name} empty");
  const auto written = compare_texts({&before, types(TypeUInt4)}, {&after, types(TypeUInt4)});
  ASSERT_TRUE(written);
  EXPECT_EQ(written->before, "{Name} full");
  const MessageText old_file = compiled(before);
  const auto stored = compare_texts({&old_file, types(TypeUInt4)}, {&after, types(TypeUInt4)});
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->before, before.stored);
  EXPECT_EQ(stored->after, after.stored);
}

}  // namespace
