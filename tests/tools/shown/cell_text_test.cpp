#include "tools/shown/cell_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include <string>
#include <string_view>

#include "tests/support/seeded_random.h"

namespace {

using qzlog_tool::append_cell;
using qzlog_tool::append_safely;
using qzlog_tool::cell_columns;
using qzlog_tool::CellAlignment;
using qzlog_tool::CellLayout;
using qzlog_tool::CellSafety;

std::string cell(std::string_view value, const CellLayout& layout) {
  std::string out;
  append_cell(value, layout, out);
  return out;
}

std::string safe(std::string_view value, CellSafety safety) {
  std::string out;
  append_safely(value, safety, out);
  return out;
}

TEST(CellText, Columns_AreThoseOfATerminal) {
  EXPECT_EQ(cell_columns(""), 0u);
  EXPECT_EQ(cell_columns("plain"), 5u);
  EXPECT_EQ(cell_columns("\u00E4\u0416\u05D0\u0627"), 4u);
  EXPECT_EQ(cell_columns("e\u0301\u200B\u200D\uFE0F"), 1u) << "combining and zero-width characters";
  EXPECT_EQ(cell_columns("\u4E2D\uFF21\uD55C\U0001F600"), 8u) << "East Asian wide characters";
  EXPECT_EQ(cell_columns("\u1112\u1161\u11AB"), 2u) << "a syllable in three parts";
  EXPECT_EQ(cell_columns("\xFF\xC3|"), 3u) << "bytes that are not UTF-8";
}

TEST(CellText, Layout_FillsAndCuts) {
  EXPECT_EQ(cell("\u4E2D\u6587", {CellAlignment::kLeft, 6}), "\u4E2D\u6587  ");
  EXPECT_EQ(cell("\u4E2D\u6587", {CellAlignment::kRight, 6}), "  \u4E2D\u6587");
  EXPECT_EQ(cell("ab", {CellAlignment::kCentre, 5}), " ab  ");
  EXPECT_EQ(cell("\u4E2D\u6587", {CellAlignment::kLeft, 0, 3}), "\u4E2D\u2026");
  EXPECT_EQ(cell("\u4E2D\u6587", {CellAlignment::kLeft, 3, 2}), "\u2026  ") << "half a character is none";
  EXPECT_EQ(cell("abc", {CellAlignment::kLeft, 2, 0}), "  ");
  EXPECT_EQ(cell("abc", {CellAlignment::kLeft, 2, 3}), "abc");
}

TEST(CellText, RandomValues_TakeTheirColumns) {
  constexpr std::string_view kPieces[] = {"a",      " ",      "\u00E4",     "\u4E2D", "e\u0301",
                                          "\u200B", "\u05D0", "\U0001F600", "\xFF"};
  qz_test::SeededRandom random;
  for (int round = 0; round < 2000; ++round) {
    std::string value;
    for (std::size_t count = random.below(12); count > 0; --count) value += kPieces[random.below(std::size(kPieces))];
    const CellLayout layout{static_cast<CellAlignment>(random.below(3)), random.below(10), 1 + random.below(12)};
    const std::string shown = cell(value, layout);
    const std::size_t columns = cell_columns(shown);
    EXPECT_GE(columns, layout.columns) << value;
    EXPECT_LE(columns, std::max(layout.columns, layout.most_columns)) << value;
    EXPECT_TRUE(cell_columns(value) > layout.most_columns || shown.find(value) != std::string::npos) << value;
  }
}

TEST(CellText, Safely_KeepsValuesOnTheirLine) {
  EXPECT_EQ(safe("a\nb\rc\td\033", CellSafety::kLine), "a\\nb\\rc\td\033");
  EXPECT_EQ(safe("a\nb\rc\td\033\u202E\u009B", CellSafety::kTerminal), "a\\nb\\rc\\td\\u001B\\u202E\\u009B");
  EXPECT_EQ(safe("\u05D0\u200F", CellSafety::kTerminal), "\u05D0\u200F");
}

}  // namespace
