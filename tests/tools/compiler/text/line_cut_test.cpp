#include "tools/compiler/text/line_cut.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

TEST(LineCut, CutLine_KeepsWholeCharacters) {
  EXPECT_EQ(cut_line("größer", 0), "größer");
  EXPECT_EQ(cut_line("größer", 6), "größer");
  EXPECT_EQ(cut_line("größer", 5), "größ…");
  EXPECT_EQ(cut_line("größer", 1), "…");
}

TEST(ColumnCount, Texts_TakeTheColumnsOfATerminal) {
  EXPECT_EQ(column_count(""), 0u);
  EXPECT_EQ(column_count("H\u00E4user"), 6u);
  EXPECT_EQ(column_count("\u4E2Dx"), 3u);
  EXPECT_EQ(column_count("e\u0301\u200B"), 1u);
  EXPECT_EQ(column_count("a\xFF\xE4z"), 4u);
}

TEST(CutLine, WideCharacters_AreNotCutInHalf) {
  EXPECT_EQ(cut_line("\u4E2D\u6587", 4), "\u4E2D\u6587");
  EXPECT_EQ(cut_line("\u4E2D\u6587", 3), "\u4E2D\u2026");
  EXPECT_EQ(cut_line("\u4E2D\u6587", 2), "\u2026");
  EXPECT_EQ(cut_line("e\u0301e\u0301e\u0301", 2), "e\u0301\u2026");
  EXPECT_EQ(cut_line("\xFF\xFF\xFF", 2), "\xFF\u2026");
}

}  // namespace
}  // namespace qzlog_compiler
