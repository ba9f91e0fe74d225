#include "tools/compiler/text/hexadecimal.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

TEST(Hexadecimal, Numbers_AreWrittenInHexadecimal) {
  EXPECT_EQ(hexadecimal(0, 1), "0");
  EXPECT_EQ(hexadecimal(0xABC, 2), "ABC");
  EXPECT_EQ(hexadecimal(0xABC, 8), "00000ABC");
  EXPECT_EQ(hexadecimal(0xABC, 8, HexadecimalLetters::kSmall), "00000abc");
  EXPECT_EQ(hexadecimal(0xFEDCBA9876543210U, 1), "FEDCBA9876543210");
  EXPECT_EQ(bits_text(5), "0x00000005");
  EXPECT_EQ(hexadecimal_bytes("a\xFF", " "), "61 FF");
  EXPECT_EQ(hexadecimal_bytes("a\xFF"), "61FF");
  EXPECT_EQ(hexadecimal_bytes(""), "");
}

}  // namespace
}  // namespace qzlog_compiler
