#include "tools/compiler/text_table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace qzlog_compiler {
namespace {

std::string text_of(const TextTable& table, std::size_t indent = 0, std::size_t columns = 0) {
  std::ostringstream out;
  table.write(indent, columns, out);
  return out.str();
}

TEST(TextTable, Columns_AreAlignedByCharacters) {
  TextTable table({">number", "name", "note"});
  EXPECT_TRUE(table.empty());
  table.add_row({"1", "Größe", "x"});
  table.add_row({"20", "a", ""});
  EXPECT_FALSE(table.empty());
  EXPECT_EQ(text_of(table, 1), " number  name   note\n      1  Größe  x\n     20  a\n");
}

TEST(TextTable, LinesOverTheColumns_AreCutWithAnEllipsis) {
  TextTable table({"name"});
  table.add_row({"häuser"});
  table.add_row({"haus"});
  EXPECT_EQ(text_of(table, 0, 4), "name\nhäu…\nhaus\n");
}

TEST(TextTable, CellOverFortyCharacters_MovesItsOwnRowOnly) {
  TextTable table({"name", "type"});
  table.add_row({std::string(41, 'n'), "t"});
  table.add_row({"short", "t"});
  EXPECT_EQ(text_of(table), "name   type\n" + std::string(41, 'n') + "  t\nshort  t\n");
}

}  // namespace
}  // namespace qzlog_compiler
