#include "tools/manual/roff.h"

#include <gtest/gtest.h>

namespace {

using qzlog_tool::roff_filled;
using qzlog_tool::roff_text;

TEST(RoffText, CharactersWithAMeaning_AreEscaped) {
  EXPECT_EQ(roff_text("plain text."), "plain text.");
  EXPECT_EQ(roff_text("--no-icu"), "\\-\\-no\\-icu");
  EXPECT_EQ(roff_text("a\\n"), "a\\(rsn");
  EXPECT_EQ(roff_text("'it' \"is\" `a` ^~"), "\\(aqit\\(aq \\(dqis\\(dq \\(gaa\\(ga \\(ha\\(ti");
  EXPECT_EQ(roff_text(".cnt\n.\n'"), "\\&.cnt\n\\&.\n\\(aq");
  EXPECT_EQ(roff_text("Größe 😀"), "Gr\\[u00F6]\\[u00DF]e \\[u1F600]");
}

TEST(RoffText, InBoldAndItalic_IsEscapedToo) {
  EXPECT_EQ(qzlog_tool::roff_bold("a-b"), "\\fBa\\-b\\fR");
  EXPECT_EQ(qzlog_tool::roff_italic("a'b"), "\\fIa\\(aqb\\fR");
}

TEST(RoffFilled, LongParagraph_HasShortLinesAndNoRequests) {
  std::string text;
  for (int i = 0; i < 100; ++i) text += "one .two ";
  const std::string filled = roff_filled(text);
  std::size_t begin = 0;
  for (std::size_t end = filled.find('\n'); end != std::string::npos; end = filled.find('\n', begin)) {
    EXPECT_LT(end - begin, 80U);
    EXPECT_NE(filled[begin], '.');
    begin = end + 1;
  }
  EXPECT_GT(begin, 0U);
}

TEST(RoffFilled, NoWords_AreNothing) { EXPECT_EQ(roff_filled(" \n "), ""); }

TEST(RoffSentence, EndsWithOneFullStop) {
  EXPECT_EQ(qzlog_tool::roff_sentence("Does"), "Does.");
  EXPECT_EQ(qzlog_tool::roff_sentence("Does."), "Does.");
}

TEST(InCapitals, OtherLettersThanThoseOfAscii_StayAsTheyAre) {
  EXPECT_EQ(qzlog_tool::in_capitals("aZ-\u00e9 1"), "AZ-\u00e9 1");
}

TEST(RoffLiteral, Lines_StayAsTheyAre) {
  EXPECT_EQ(qzlog_tool::roff_literal("a  b\n\n.c"), ".RS 2\n.nf\na  b\n\n\\&.c\n.fi\n.RE\n");
}

}  // namespace
