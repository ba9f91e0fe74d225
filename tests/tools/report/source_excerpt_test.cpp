#include "tools/report/source_excerpt.h"

#include <gtest/gtest.h>

#include "tools/compiler/text/display_width.h"

namespace qzlog_compiler {
namespace {

struct ExcerptCase {
  const char* line;
  std::uint32_t column;
  const char* shown;
  std::size_t caret;
};

TEST(MakeExcerpt, Places_AreFoundWhateverStandsBeforeThem) {
  const ExcerptCase cases[] = {
      {"abc", 1, "abc", 0},
      {"abc", 3, "abc", 2},
      {"abc", 4, "abc", 3},                        // behind the end
      {"abc", 90, "abc", 3},                       // far behind it
      {"", 1, "", 0},                              // nothing there
      {" \t x", 0, "     x", 5},                   // the first word
      {"x", 0, "x", 0},                            // at the beginning
      {"  ", 0, "  ", 0},                          // or nowhere
      {"\tx", 2, "    x", 4},                      // a tab goes to the next stop
      {"abc\tx", 5, "abc x", 4},                   // which may be near
      {"\u65E5\u672Cx", 3, "\u65E5\u672Cx", 4},    // wide characters
      {"e\u0301x", 3, "e\u0301x", 1},              // a combining one
      {"a\x1Bx", 3, "a\\u001Bx", 7},               // a control character
      {"a\u202Ex", 3, "a\\u202Ex", 7},             // one that turns the direction of writing
      {"a\xFF\xFEx", 4, "a\uFFFD\uFFFDx", 3},      // no UTF-8, byte by byte
      {"\U0001F600 {X}", 3, "\U0001F600 {X}", 3},  // a surrogate pair elsewhere
  };
  for (const ExcerptCase& entry : cases) {
    const std::optional<SourceExcerpt> excerpt = make_excerpt(entry.line, entry.column);
    ASSERT_TRUE(excerpt) << entry.line;
    EXPECT_EQ(excerpt->line, entry.shown);
    EXPECT_EQ(excerpt->caret, entry.caret) << entry.line;
  }
}

TEST(MakeExcerpt, LineOfTheWidestKind_IsShownWhole) {
  const std::string line(103, 'x');
  EXPECT_EQ(make_excerpt(line, 100)->line, line);
  EXPECT_EQ(make_excerpt(line, 1)->line, line);
  EXPECT_EQ(make_excerpt(line + "x", 1)->line, std::string(100, 'x') + "...");
}

TEST(MakeExcerpt, LongLine_IsCutAroundThePlace) {
  const std::string line = std::string(500, 'a') + "X" + std::string(500, 'b');
  const SourceExcerpt excerpt = *make_excerpt(line, 501);
  EXPECT_EQ(excerpt.line, "..." + std::string(60, 'a') + "X" + std::string(39, 'b') + "...");
  EXPECT_EQ(excerpt.line[excerpt.caret], 'X');
}

TEST(MakeExcerpt, LongLine_IsCutOnlyWhereItGoesOn) {
  const std::string line = "X" + std::string(500, 'b') + "Y";
  const SourceExcerpt first = *make_excerpt(line, 1);
  EXPECT_EQ(first.line, "X" + std::string(99, 'b') + "...");
  EXPECT_EQ(first.caret, 0U);
  const SourceExcerpt last = *make_excerpt(line, 502);
  EXPECT_EQ(last.line, "..." + std::string(60, 'b') + "Y");
  EXPECT_EQ(last.line[last.caret], 'Y');
}

TEST(MakeExcerpt, LongLineOfWideCharacters_KeepsTheCaretUnderThePlace) {
  std::string line;
  for (int i = 0; i < 300; ++i) line += "\u65E5";
  const SourceExcerpt excerpt = *make_excerpt(line + "X" + line, 301);
  const std::size_t place = excerpt.line.find('X');
  ASSERT_NE(place, std::string::npos);
  EXPECT_EQ(excerpt.caret, display_width(excerpt.line.substr(0, place)));
  EXPECT_LE(display_width(excerpt.line), 107U);
}

TEST(MakeExcerpt, LineOfCharactersWithoutWidth_IsCutToo) {
  std::string line = "x";
  for (int i = 0; i < 100000; ++i) line += "\u0301";
  EXPECT_LT(make_excerpt(line, 1)->line.size(), 5000U);
  EXPECT_EQ(make_excerpt(line, 1)->caret, 0U);
}

TEST(MakeExcerpt, PlaceFarToTheRight_HasNone) { EXPECT_FALSE(make_excerpt(std::string(100000, 'x'), 70000)); }

TEST(SourceLines, EveryKindOfLineBreak_EndsALine) {
  const SourceLines lines("one\ntwo\r\nthree\rfour\u0085five\u2028six\u2029\u00A9seven\n");
  const char* const expected[] = {"one", "two", "three", "four", "five", "six", "\u00A9seven", ""};
  for (std::uint32_t i = 0; i < std::size(expected); ++i) EXPECT_EQ(lines.excerpt({i + 1, 1})->line, expected[i]);
  EXPECT_FALSE(lines.excerpt({9, 1}));
}

TEST(SourceLines, LineFeeds_EndLinesWhereNothingElseDoes) {
  const SourceLines lines("one\rtwo\r\nthree\u2028four\n", LineBreaks::kLineFeed, 5);
  const char* const expected[] = {"one\\u000Dtwo", "three\\u2028four", ""};
  for (std::uint32_t i = 0; i < std::size(expected); ++i) EXPECT_EQ(lines.excerpt({i + 5, 1})->line, expected[i]);
  EXPECT_FALSE(lines.excerpt(4));
  EXPECT_FALSE(lines.excerpt(8));
}

TEST(SourceLines, ByteOrderMark_IsNoColumn) {
  const SourceLines lines("\xEF\xBB\xBFversion: 1");
  EXPECT_EQ(lines.excerpt({1, 10})->line, "version: 1");
  EXPECT_EQ(lines.excerpt({1, 10})->caret, 9U);
}

TEST(SourceLines, UnknownPosition_HasNone) { EXPECT_FALSE(SourceLines("x").excerpt({})); }

TEST(SourceLines, EmptySource_HasOneEmptyLine) {
  EXPECT_EQ(SourceLines("").excerpt({1, 1})->line, "");
  EXPECT_FALSE(SourceLines("").excerpt({2, 1}));
}

}  // namespace
}  // namespace qzlog_compiler
