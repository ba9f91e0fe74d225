#include "tools/compiler/text/utf8_text.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

struct DecodeCase {
  std::string bytes;
  char32_t code;
  std::size_t size;
};

TEST(IsUtf8, WholeText_HasToBeWellFormed) {
  EXPECT_TRUE(is_utf8(""));
  EXPECT_TRUE(is_utf8("Größe \U0001F600"));
  EXPECT_FALSE(is_utf8("caf\xE9"));
  EXPECT_FALSE(is_utf8("a\xC3"));
  EXPECT_FALSE(is_utf8("\xED\xA0\x80"));
}

TEST(DecodeUtf8, WellFormedAndBrokenBytes_GiveCodeOrSizeZero) {
  const DecodeCase cases[] = {
      {"a", U'a', 1},
      {"é", U'é', 2},
      {"漢", U'漢', 3},
      {"😀", U'😀', 4},
      {"\xF4\x8F\xBF\xBF", 0x10FFFF, 4},
      {"", 0, 0},
      {"\x80", 0, 0},
      {"\xC0\x80", 0, 0},
      {"\xC1\xBF", 0, 0},
      {"\xE0\x9F\xBF", 0, 0},
      {"\xED\xA0\x80", 0, 0},
      {"\xF0\x8F\xBF\xBF", 0, 0},
      {"\xF4\x90\x80\x80", 0, 0},
      {"\xF5\x80\x80\x80", 0, 0},
      {"\xE2\x82", 0, 0},
      {"\xE2\x82 ", 0, 0},
      {"\xFF", 0, 0},
  };
  for (const DecodeCase& entry : cases) {
    const Utf8Character character = decode_utf8(entry.bytes, 0);
    EXPECT_EQ(character.size, entry.size) << ::testing::PrintToString(entry.bytes);
    EXPECT_EQ(character.code, entry.code);
  }
}

TEST(Utf16Length, CharactersBeyondThePlane_CountTwice) {
  EXPECT_EQ(utf16_length(""), 0U);
  EXPECT_EQ(utf16_length("aé漢"), 3U);
  EXPECT_EQ(utf16_length("😀"), 2U);
}

TEST(Quoted, ControlCharacters_AreEscaped) {
  EXPECT_EQ(quoted(std::string_view("a\tb\nc\x1B[31m\0", 11)), "'a\\tb\\nc\\u001B[31m\\u0000'");
  EXPECT_EQ(quoted("\u0085\u2028é"), "'\\u0085\\u2028é'");
}

TEST(Quoted, LongText_IsCutAfterSixtyCharacters) {
  EXPECT_EQ(quoted(std::string(60, 'x')), "'" + std::string(60, 'x') + "'");
  EXPECT_EQ(quoted(std::string(61, 'x')), "'" + std::string(60, 'x') + "...'");
}

TEST(Quoted, BrokenBytes_BecomeReplacementCharacters) { EXPECT_EQ(quoted("a\xFF"), "'a\uFFFD'"); }

TEST(Printable, CharactersThatTurnTheDirectionOfWriting_BecomeEscapes) {
  EXPECT_EQ(printable("a\u202Eb\u2066c\u200Fd\u061Ce"), "a\\u202Eb\\u2066c\\u200Fd\\u061Ce");
  EXPECT_EQ(printable("\u200B\u202F\u2070"), "\u200B\u202F\u2070");
}

}  // namespace
}  // namespace qzlog_compiler
