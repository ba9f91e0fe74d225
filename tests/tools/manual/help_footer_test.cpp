#include "tools/manual/help_footer.h"

#include <gtest/gtest.h>

namespace {

using qzlog_tool::HelpFooter;
using qzlog_tool::parse_help_footer;

TEST(HelpFooter, NoText_IsNothing) {
  const HelpFooter footer = parse_help_footer("");
  EXPECT_TRUE(footer.notes.empty());
  EXPECT_EQ(footer.exit_status, "");
  EXPECT_EQ(footer.examples, "");
}

TEST(HelpFooter, ParagraphsAndIndentedLines_AreNotesInTheirOrder) {
  const HelpFooter footer =
      parse_help_footer("One\nparagraph:\n  literal\n    more\n  end\nAnother\n\nThird.\n\n  alone\n");
  ASSERT_EQ(footer.notes.size(), 5U);
  EXPECT_EQ(footer.notes[0].text, "One paragraph:");
  EXPECT_EQ(footer.notes[1].text, "literal\n  more\nend");
  EXPECT_TRUE(footer.notes[1].literal);
  EXPECT_EQ(footer.notes[2].text, "Another");
  EXPECT_EQ(footer.notes[3].text, "Third.");
  EXPECT_FALSE(footer.notes[3].literal);
  EXPECT_EQ(footer.notes[4].text, "alone");
  EXPECT_TRUE(footer.notes[4].literal);
}

TEST(HelpFooter, Examples_LoseTheirIndentation) {
  const HelpFooter footer = parse_help_footer("Before.\n\nExamples:\n  qzlog a\n\n  qzlog b \\\n    c\n\nAfter.");
  EXPECT_EQ(footer.examples, "qzlog a\nqzlog b \\\n  c");
  ASSERT_EQ(footer.notes.size(), 2U);
  EXPECT_EQ(footer.notes[1].text, "After.");
  EXPECT_EQ(parse_help_footer("Example:\n  qzlog a\n").examples, "qzlog a");
}

TEST(HelpFooter, ExitStatus_EndsWithASentenceOrABlankLine) {
  const HelpFooter next = parse_help_footer("Exit status: 0 success; 1 findings\nor bad input.\nMore.");
  EXPECT_EQ(next.exit_status, "0 success; 1 findings or bad input.");
  ASSERT_EQ(next.notes.size(), 1U);
  EXPECT_EQ(next.notes[0].text, "More.");
  EXPECT_EQ(parse_help_footer("Exit status: 0 always\n\nMore.").exit_status, "0 always");
  EXPECT_EQ(parse_help_footer("Exit status:").exit_status, "");
}

}  // namespace
