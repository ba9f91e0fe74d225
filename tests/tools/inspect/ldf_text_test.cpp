#include "tools/inspect/ldf_text.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

TEST(LdfText, Offset_IsWrittenInBothWays) { EXPECT_EQ(offset_text(161), "161 (0xA1)"); }

TEST(LdfText, TypeCode_IsNamedByItsLowEightBits) {
  EXPECT_EQ(type_text(9), "Char32");
  EXPECT_EQ(type_text(0x109), "Char32 (265)");
  EXPECT_EQ(type_text(99), "Unknown (99)");
}

TEST(LdfText, ShownText_HasNoControlCharacters) { EXPECT_EQ(shown_text("a\n\x1B\xFF"), "\"a\\n\\u001B\uFFFD\""); }

}  // namespace
}  // namespace qzlog_compiler
