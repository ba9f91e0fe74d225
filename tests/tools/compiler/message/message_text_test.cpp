#include "tools/compiler/message/message_text.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

/// Parts as text: literals in brackets, placeholders in angles, each with its offset.
std::string outline(const MessageParts& parsed) {
  std::string out;
  for (const MessagePart& part : parsed.parts) {
    out += std::to_string(part.offset);
    out += part.is_placeholder() ? "<" + part.text : "[" + part.text;
    if (part.format != '\0') out += std::string(":") + part.format;
    out += part.is_placeholder() ? ">" : "]";
  }
  return out;
}

struct ParseCase {
  const char* text;
  const char* parts;
};

TEST(ParseMessageText, WellFormedTexts_GiveTheirParts) {
  const ParseCase cases[] = {
      {"", ""},
      {"abc", "0[abc]"},
      {"a{B}c", "0[a]1<B>4[c]"},
      {"{B:d}", "0<B:d>"},
      {"{A}{B}", "0<A>3<B>"},
      {"{{}}", "0[{}]"},
      {"{{{A}}}", "0[{]2<A>5[}]"},
      {"x{{y}}z", "0[x{y}z]"},
      {"{Free blocks}", "0<Free blocks>"},
      {"100%", "0[100%]"},
  };
  for (const ParseCase& entry : cases) {
    std::vector<MessageFinding> findings;
    EXPECT_EQ(outline(parse_message_text(entry.text, findings)), entry.parts) << entry.text;
    EXPECT_TRUE(findings.empty()) << entry.text;
  }
}

struct MistakeCase {
  const char* text;
  std::size_t offset;
  Rule rule;
};

TEST(ParseMessageText, Mistakes_AreFoundAtTheirOffset) {
  const MistakeCase cases[] = {
      {"a } b", 2, Rule::kUnbalancedBrace}, {"a { b", 2, Rule::kUnbalancedBrace}, {"{A{B}", 0, Rule::kUnbalancedBrace},
      {"{A}}", 3, Rule::kUnbalancedBrace},  {"x{}", 1, Rule::kBadPlaceholder},    {"{:d}", 0, Rule::kBadPlaceholder},
      {"{A:}", 0, Rule::kUnknownFormat},    {"{A:x}", 0, Rule::kUnknownFormat},   {"{A:dd}", 0, Rule::kUnknownFormat},
      {"{A:sC}", 0, Rule::kUnknownFormat},
  };
  for (const MistakeCase& entry : cases) {
    std::vector<MessageFinding> findings;
    parse_message_text(entry.text, findings);
    ASSERT_EQ(findings.size(), 1U) << entry.text;
    EXPECT_EQ(findings[0].offset, entry.offset) << entry.text;
    EXPECT_EQ(findings[0].rule, entry.rule) << entry.text;
  }
}

TEST(ParseMessageText, SeveralMistakes_AreAllFound) {
  std::vector<MessageFinding> findings;
  parse_message_text("} {} {A:x} {", findings);
  EXPECT_EQ(findings.size(), 4U);
}

TEST(ParseMessageText, PercentSigns_AreToldApartByTheirPlace) {
  std::vector<MessageFinding> findings;
  const MessageParts parsed = parse_message_text("%%a%%{A}%{{%", findings);
  EXPECT_EQ(parsed.leading_percents, 2U);
  EXPECT_EQ(parsed.later_percents, (std::vector<std::size_t>{3, 8, 11}));
}

}  // namespace
}  // namespace qzlog_compiler
