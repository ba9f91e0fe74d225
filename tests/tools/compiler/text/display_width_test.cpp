#include "tools/compiler/text/display_width.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

struct WidthCase {
  const char* text;
  std::size_t width;
};

TEST(DisplayWidth, Texts_TakeTheColumnsOfATerminal) {
  const WidthCase cases[] = {
      {"", 0},
      {"abc", 3},
      {"\u00E9", 1},              // e with acute in one character
      {"e\u0301", 1},             // and in two
      {"\u65E5\u672C", 4},        // Kanji
      {"\uFF21", 2},              // full-width A
      {"\uFF76", 1},              // half-width Katakana
      {"\U0001F600", 2},          // a smiling face
      {"a\u200Bb", 2},            // a blank without width
      {"\u1112\u1161\u11AB", 2},  // a Hangul syllable in three characters
      {"\u00AD", 1},              // a soft hyphen, which terminals show
  };
  for (const WidthCase& entry : cases) EXPECT_EQ(display_width(entry.text), entry.width) << entry.text;
}

TEST(DisplayWidth, TextThatIsNotUtf8_CountsUpToThere) { EXPECT_EQ(display_width("ab\xFFzz"), 2U); }

}  // namespace
}  // namespace qzlog_compiler
