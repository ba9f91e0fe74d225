#include "message/text_cut.h"

#include <gtest/gtest.h>

#include <string>

#include "message/code_page.h"
#include "qzlog/qz_exception.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

constexpr const char* kTooSmall = "The buf length is smaller than cut length!";

using Text = std::string;

Text bytes_of(const Text& text, int limit, int capacity) {
  Text buffer(static_cast<std::size_t>(capacity), '~');
  qzlog::cut_to_bytes(text.c_str(), limit, buffer.data(), capacity);
  return buffer;
}

Text units_of(const Text& text, const char* code_page, int limit, int capacity) {
  Text buffer(static_cast<std::size_t>(capacity), '~');
  qzlog::cut_to_units(text.c_str(), code_page, limit, buffer.data(), capacity);
  return buffer.c_str();
}

TEST(TextCut, Bytes_CutThereOrFilledWithZeros) {
  EXPECT_EQ(bytes_of("abcdef", 4, 6), Text("abcd\0~", 6));
  EXPECT_EQ(bytes_of("ab", 4, 6), Text("ab\0\0\0~", 6));
  EXPECT_EQ(bytes_of("\u00E9\u00E9", 3, 4), Text("\u00E9\xC3\0", 4)) << "characters are not looked at";
}

TEST(TextCut, BytesWithoutRoomForTheTerminator_IllegalArgument) {
  EXPECT_EQ(qz_test::thrown_by([] { bytes_of("ab", 4, 4); }), qz_test::thrown<QZX_logging_illegal_argument>(kTooSmall));
}

TEST(TextCut, Units_OfWhatTheTextStandsFor) {
  EXPECT_EQ(units_of("abcdef", "UTF-8", 4, 100), "abcd");
  EXPECT_EQ(units_of("\u00E4\u00F6\u00FC", "UTF-8", 2, 100), "\u00E4\u00F6");
  EXPECT_EQ(units_of("\xE4\xF6\xFC", "ISO-8859-1", 2, 100), "\xE4\xF6");
  EXPECT_EQ(units_of("a\U0001F600b", "UTF-8", 3, 100), "a\U0001F600") << "a pair is two units";
  EXPECT_EQ(units_of("ab", "UTF-8", 4, 100), "ab");
}

TEST(TextCut, UnitsWithoutRoomForTheTerminator_IllegalArgument) {
  EXPECT_EQ(units_of("abcd", "UTF-8", 4, 5), "abcd");
  for (const int capacity : {1, 4}) {
    EXPECT_EQ(qz_test::thrown_by([capacity] { units_of("abcd", "UTF-8", 4, capacity); }),
              qz_test::thrown<QZX_logging_illegal_argument>(kTooSmall))
        << capacity;
  }
}

TEST(TextCut, UnitsInAnUnknownCodePage_IllegalArgument) {
  EXPECT_EQ(qz_test::thrown_by([] { units_of("abcd", "no such page", 4, 100); }),
            qz_test::thrown<QZX_logging_illegal_argument>(kTooSmall));
}

TEST(TextCut, CodePagesThatSwitchBetweenCharacterSets_FitIntoTheBytesThatUnitsTake) {
  for (const char* const code_page : {"ISO-2022-JP-2", "ISO-2022-CN-EXT", "UTF-7", "HZ", "GB18030"}) {
    Text text;
    ASSERT_TRUE(encode_text(u"\u3042\u4E00\u3042", code_page, text));
    constexpr int kUnits = 3;
    const Text cut = units_of(text, code_page, kUnits, static_cast<int>(kUnits * qzlog::kMostBytesPerUnit + 1));
    EXPECT_EQ(decode_text(cut.c_str(), code_page), decode_text(text.c_str(), code_page)) << code_page;
  }
}

}  // namespace
