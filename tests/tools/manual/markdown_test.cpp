#include "tools/manual/markdown.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qzlog_tool::MarkdownBlock;
using qzlog_tool::MarkdownSpan;
using qzlog_tool::parse_markdown;
using qzlog_tool::parse_spans;
using Kind = MarkdownBlock::Kind;
using Style = MarkdownSpan::Style;

TEST(Markdown, NothingButComments_IsNothing) {
  EXPECT_TRUE(parse_markdown("").empty());
  EXPECT_TRUE(parse_markdown("\n<!-- run -->\n\n<!-- in\nlines -->\n").empty());
}

TEST(Markdown, Headings_HaveTheirLevels) {
  const auto blocks = parse_markdown("# The *page*\n## A part\ntext\n### of it\n#none\n");
  ASSERT_EQ(blocks.size(), 5U);
  EXPECT_EQ(blocks[0].text, "The *page*");
  EXPECT_EQ(blocks[0].level, 1);
  EXPECT_EQ(blocks[1].level, 2);
  EXPECT_EQ(blocks[2].kind, Kind::kParagraph);
  EXPECT_EQ(blocks[3].level, 3);
  EXPECT_EQ(blocks[4].kind, Kind::kParagraph);
}

TEST(Markdown, LinesWithoutAnEmptyOneBetween_AreOneParagraph) {
  const auto blocks = parse_markdown("one\n  two\n\nthree\n<!-- run -->\nfour");
  ASSERT_EQ(blocks.size(), 3U);
  EXPECT_EQ(blocks[0].text, "one two");
  EXPECT_EQ(blocks[1].text, "three");
  EXPECT_EQ(blocks[2].text, "four");
}

TEST(Markdown, Items_GoOnInIndentedLines) {
  const auto blocks = parse_markdown("- one\n  more\n- two\n\n1. first\n12. twelfth\n-no item\n2.5 is none\n");
  ASSERT_EQ(blocks.size(), 4U);
  for (const MarkdownBlock& block : blocks) EXPECT_EQ(block.kind, Kind::kItem);
  EXPECT_EQ(blocks[0].text, "one more");
  EXPECT_EQ(blocks[0].mark, "-");
  EXPECT_EQ(blocks[1].text, "two");
  EXPECT_EQ(blocks[2].mark, "1.");
  EXPECT_EQ(blocks[3].mark, "12.");
  EXPECT_EQ(blocks[3].text, "twelfth -no item 2.5 is none");
}

TEST(Markdown, Code_StaysAsItIs) {
  const auto blocks =
      parse_markdown("```cpp\n# no heading\n\n  | no table\n```\n  ```\n  indented\n    more\n ```\n```\nopen");
  ASSERT_EQ(blocks.size(), 3U);
  EXPECT_EQ(blocks[0].kind, Kind::kCode);
  EXPECT_EQ(blocks[0].text, "# no heading\n\n  | no table");
  EXPECT_EQ(blocks[1].text, "indented\n  more");
  EXPECT_EQ(blocks[2].text, "open");
}

TEST(Markdown, Tables_AreCutIntoCells) {
  const auto blocks = parse_markdown("| a | b |\n|---|:-:|\n| `x \\| y` | |\n| | z\ntext\n");
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_EQ(blocks[0].kind, Kind::kTable);
  EXPECT_EQ(blocks[0].rows, (std::vector<std::vector<std::string>>{{"a", "b"}, {"`x | y`", ""}, {"", "z"}}));
  EXPECT_EQ(blocks[1].text, "text");
}

std::string shown(const std::string& text) {
  std::string result;
  for (const MarkdownSpan& span : parse_spans(text)) {
    const char* const marks[] = {"", "`", "**", "*"};
    const std::string mark = marks[static_cast<int>(span.style)];
    result += mark + span.text + mark;
  }
  return result;
}

TEST(MarkdownSpans, Styles_AreTold) {
  EXPECT_EQ(shown("a `b*c*` **d `e`** *f* g"), "a `b*c*` **d **`e` *f* g");
  EXPECT_EQ(shown("``a`b``"), "`a`b`");
}

TEST(MarkdownSpans, Links_AreTheirTexts) {
  EXPECT_EQ(shown("see [the `qzlog` *page*](a/b.md#c), [x] and (y)"), "see the `qzlog` *page*, [x] and (y)");
  EXPECT_EQ(shown("[x] then [y](z)"), "[x] then y");
}

TEST(MarkdownSpans, PowersAndEscapes_AreWhatIsTyped) {
  EXPECT_EQ(shown("2<sup>64</sup> \\* \\a a < b"), "2^64 * \\a a < b");
}

TEST(MarkdownSpans, MarksWithoutAnEnd_AreText) {
  for (const char* const text : {"`a", "**a", "*a", "a * b * c", "[a](b", "<sup>a", "", "*", "\\"}) {
    EXPECT_EQ(shown(text), text);
  }
}

TEST(MarkdownSpans, PlainText_HasNoMarks) { EXPECT_EQ(qzlog_tool::plain_text("**a** [`b`](c)"), "a b"); }

}  // namespace
