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

}  // namespace
}  // namespace qzlog_compiler
