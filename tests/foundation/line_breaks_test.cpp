#include "foundation/line_breaks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

constexpr char kUntouched = '~';

/// What a function writes into `size` bytes, up to the terminator; the bytes behind them have to stay.
std::string written(void (*convert)(const char*, char*, int), const std::string& source, int size) {
  std::string memory(static_cast<std::size_t>(size) + 16, kUntouched);
  convert(source.c_str(), memory.data(), size);
  const std::string behind = memory.substr(static_cast<std::size_t>(size));
  EXPECT_EQ(behind, std::string(16, kUntouched)) << source;
  EXPECT_NE(memory.find('\0'), std::string::npos) << source;
  return memory.c_str();
}

struct Escaping {
  const char* plain;
  const char* escaped;
};

TEST(LineBreaks, EscapedAndTurnedBack_TheSameText) {
  const Escaping kTable[] = {{"", ""},          {"plain", "plain"}, {"\n", "\\n"},      {"\r\n", "\\r\\n"},
                             {"a\nb", "a\\nb"}, {"\t\v", "\t\v"},   {"end\r", "end\\r"}};
  for (const Escaping& row : kTable) {
    EXPECT_EQ(written(qzlog::escape_line_breaks, row.plain, 100), row.escaped);
    EXPECT_EQ(written(qzlog::unescape_line_breaks, row.escaped, 100), row.plain);
  }
}

TEST(LineBreaks, OtherLettersBehindABackslash_Stay) {
  for (const char* const text : {"\\", "a\\", "\\t", "\\\\", "\\N"}) {
    EXPECT_EQ(written(qzlog::unescape_line_breaks, text, 100), text);
  }
  EXPECT_EQ(written(qzlog::unescape_line_breaks, "\\\\n", 100), "\\\n") << "the second backslash and its letter";
}

TEST(LineBreaks, TooLittleRoom_HeadOfTheTextAndATerminator) {
  const std::string expected[] = {"", "a", "a\\", "a\\n", "a\\nb"};
  for (int size = 1; size <= 5; ++size) {
    // Escaping reads no more characters than it has room for.
    EXPECT_EQ(written(qzlog::escape_line_breaks, "a\nb", size), expected[size - 1]) << size;
  }
  EXPECT_EQ(written(qzlog::unescape_line_breaks, "a\\nb", 3), "a\n");
  EXPECT_EQ(written(qzlog::unescape_line_breaks, "a\\nb", 1), "");
}

TEST(LineBreaks, EveryCharacterAtEveryPlaceOfEveryLength_FoundExactlyIfItIsOne) {
  for (std::size_t length = 1; length <= 40; ++length) {
    for (std::size_t place = 0; place < length; ++place) {
      for (int character = 0; character < 256; ++character) {
        std::string text(length, 'x');
        text[place] = static_cast<char>(character);
        const bool expected = character == '\n' || character == '\r';
        ASSERT_EQ(qzlog::contains_line_break(text.data(), length), expected) << length << " " << place;
      }
    }
  }
}

TEST(LineBreaks, BehindTheLength_NotFound) { EXPECT_FALSE(qzlog::contains_line_break("12345678\n", 8)); }

TEST(LineBreaks, FindByteBelow_AsByteByByte) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    for (unsigned place = 0; place < 8; ++place) {
      const std::uint64_t others = 0x4141414141414141U & ~(std::uint64_t{0xFF} << place * 8);
      const std::uint64_t bytes = others | std::uint64_t{byte} << place * 8;
      for (const unsigned limit : {1U, 32U, 65U, 128U}) {
        const bool expected = byte < limit || 0x41 < limit;
        ASSERT_EQ(qzlog::find_byte_below(bytes, static_cast<unsigned char>(limit)) != 0, expected)
            << byte << " " << place << " " << limit;
      }
    }
  }
}

}  // namespace
