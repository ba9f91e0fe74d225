#include "tools/compiler/ldf_text.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

TEST(LdfText, Numbers_AreWrittenInHexadecimal) {
  EXPECT_EQ(hexadecimal(0, 1), "0");
  EXPECT_EQ(hexadecimal(0xABC, 2), "ABC");
  EXPECT_EQ(hexadecimal(0xABC, 8), "00000ABC");
  EXPECT_EQ(offset_text(161), "161 (0xA1)");
  EXPECT_EQ(bits_text(5), "0x00000005");
  EXPECT_EQ(hexadecimal_bytes("a\xFF", " "), "61 FF");
  EXPECT_EQ(hexadecimal_bytes("a\xFF"), "61FF");
  EXPECT_EQ(hexadecimal_bytes(""), "");
}

TEST(LdfText, TypeCode_IsNamedByItsLowEightBits) {
  EXPECT_EQ(type_text(9), "Char32");
  EXPECT_EQ(type_text(0x109), "Char32 (265)");
  EXPECT_EQ(type_text(99), "Unknown (99)");
}

TEST(LdfText, ShownText_HasNoControlCharacters) { EXPECT_EQ(shown_text("a\n\x1B\xFF"), "\"a\\n\\u001B\uFFFD\""); }

TEST(LdfText, CutLine_KeepsWholeCharacters) {
  EXPECT_EQ(cut_line("größer", 0), "größer");
  EXPECT_EQ(cut_line("größer", 6), "größer");
  EXPECT_EQ(cut_line("größer", 5), "größ…");
  EXPECT_EQ(cut_line("größer", 1), "…");
}

}  // namespace
}  // namespace qzlog_compiler
