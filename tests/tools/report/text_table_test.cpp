#include "tools/report/text_table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace qzlog_compiler {
namespace {

std::string text_of(const TextRow& titles, const std::vector<TextRow>& rows, std::size_t indent = 0,
                    std::size_t columns = 0, std::size_t widest_column = kWidestColumn) {
  std::ostringstream out;
  const auto row = [&](std::size_t i) { return rows[i]; };
  write_text_table({titles, rows.size(), row, widest_column}, indent, columns, out);
  return out.str();
}

TEST(WriteTextTable, Columns_AreAlignedByCharacters) {
  EXPECT_EQ(text_of({">number", "name", "note"}, {{"1", "Größe", "x"}, {"20", "a", ""}}, 1),
            " number  name   note\n      1  Größe  x\n     20  a\n");
}

TEST(WriteTextTable, NoRows_GiveNothing) { EXPECT_EQ(text_of({">number", "name"}, {}), ""); }

TEST(WriteTextTable, LinesOverTheColumns_AreCutWithAnEllipsis) {
  EXPECT_EQ(text_of({"name"}, {{"häuser"}, {"haus"}}, 0, 4), "name\nhäu…\nhaus\n");
}

TEST(WriteTextTable, WideAndCombiningCharacters_TakeTheColumnsOfATerminal) {
  const std::vector<TextRow> rows = {{"\u4E2D\u6587", "x"}, {"e\u0301t\u00E9", "y"}, {"name", "\u4E2D\u6587"}};
  EXPECT_EQ(text_of({"", ""}, rows), "\u4E2D\u6587  x\ne\u0301t\u00E9   y\nname  \u4E2D\u6587\n");
  // A wide one that has only half of its room is cut too.
  EXPECT_EQ(text_of({"", ""}, rows, 0, 8), "\u4E2D\u6587  x\ne\u0301t\u00E9   y\nname  \u2026\n");
  EXPECT_EQ(text_of({"", ""}, rows, 0, 3), "\u4E2D\u2026\ne\u0301t\u2026\nna\u2026\n");
}

TEST(WriteTextTable, CellOverFortyCharacters_MovesItsOwnRowOnly) {
  EXPECT_EQ(text_of({"name", "type"}, {{std::string(41, 'n'), "t"}, {"short", "t"}}),
            "name   type\n" + std::string(41, 'n') + "  t\nshort  t\n");
}

TEST(WriteTextTable, OwnLimitOfAColumn_Counts) {
  EXPECT_EQ(
      text_of({"name", "type"}, {{std::string(41, 'n'), "t"}, {"short", "t"}}, 0, 0, 41),
      "name" + std::string(39, ' ') + "type\n" + std::string(41, 'n') + "  t\nshort" + std::string(38, ' ') + "t\n");
}

TEST(WriteTextTable, NoTitles_OnlyRows) {
  EXPECT_EQ(text_of({">", "", ""}, {{"1", "a", ""}, {"20", "bcd", "e"}}, 2), "   1  a\n  20  bcd  e\n");
}

}  // namespace
}  // namespace qzlog_compiler
