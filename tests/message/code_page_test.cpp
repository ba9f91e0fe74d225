#include "message/code_page.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace qz_test {
namespace {

class CodePage : public testing::Test {
 protected:
  RenderingSettings settings_;
};

struct TextInCodePage {
  const char* code_page;
  const char* bytes;
  const char* utf8;
};

constexpr TextInCodePage kTexts[] = {
    {"UTF-8", "é漢😀", "é漢😀"},
    {"utf8", "é漢😀", "é漢😀"},
    {"", "é漢😀", "é漢😀"},
    {"ISO-8859-1", "caf\xE9", "café"},
    {"windows-1251", "\xCF\xF0\xE8\xE2\xE5\xF2", "Привет"},
    {"Shift_JIS", "\x8A\xBF\x8E\x9A", "漢字"},
    {"EUC-JP", "\xB4\xC1\xBB\xFA", "漢字"},
    {"GB18030", "\xBA\xBA\x94\x39\xFC\x36", "汉😀"},
    {"ISO-2022-JP", "\x1B$B4A;z\x1B(B", "漢字"},
    {"ISO-2022-JP", "a\x1B$B4A\x1B(Bb\x1B$B;z\x1B(B", "a漢b字"},
};

std::string encoded(const std::string& utf8, const char* code_page) {
  std::string buffer(utf8.size() * 8 + 16, '#');
  int length = 0;
  EXPECT_TRUE(encode_text(from_utf8(utf8), code_page, buffer.data(), static_cast<int>(buffer.size()), length));
  return buffer.substr(0, static_cast<std::size_t>(length));
}

TEST_F(CodePage, Table_DecodedAndEncoded) {
  for (const TextInCodePage& c : kTexts) {
    EXPECT_EQ(to_utf8(decode_text(c.bytes, c.code_page)), c.utf8) << c.code_page;
    EXPECT_EQ(encoded(c.utf8, c.code_page), c.bytes) << c.code_page;
  }
}

TEST_F(CodePage, DecodeUnknownCodePage_Bogus) {
  EXPECT_TRUE(decode_text("abc", "no such page").isBogus());
  EXPECT_TRUE(decode_text("abc", "no such page").isEmpty());
  EXPECT_EQ(to_utf8(decode_text("abc", "UTF-8")), "abc");
}

TEST_F(CodePage, DecodeBadBytes_ReplacementCharacters) {
  EXPECT_EQ(decode_text("a\xFF"
                        "b",
                        "UTF-8"),
            u"a\uFFFDb");
  EXPECT_EQ(decode_text("a\xE6\xBC", "UTF-8"), u"a\uFFFD");
  EXPECT_EQ(decode_text("a\x8A", "Shift_JIS"), u"a\x1A");  // a single byte becomes the control character
}

TEST_F(CodePage, DecodeAfterATextThatEndsInTheMiddle_StartsAfresh) {
  EXPECT_EQ(decode_text("\x1B$B4", "ISO-2022-JP").length(), 1);
  EXPECT_EQ(decode_text("4A", "ISO-2022-JP"), u"4A");
  EXPECT_EQ(decode_text("\x8A", "Shift_JIS").length(), 1);
  EXPECT_EQ(decode_text("abc", "Shift_JIS"), u"abc");
}

TEST_F(CodePage, EncodeTwice_EachTimeFromTheInitialState) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(encoded("漢", "ISO-2022-JP"), "\x1B$B4A\x1B(B");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(encoded("a", "UTF-16"), encoded("a", "UTF-16"));
}

TEST_F(CodePage, DecodeRandomBytes_AsIcuDoes) {
  SeededRandom random;
  const char* const pages[] = {"UTF-8", "ISO-8859-1", "Shift_JIS", "GB18030", "EUC-JP", "ISO-2022-JP", "Big5"};
  for (int i = 0; i < 5000 && !testing::Test::HasFailure(); ++i) {
    const char* const page = pages[random.between(0, 6)];
    const std::string bytes = random.text(static_cast<std::size_t>(random.between(0, 20)));
    EXPECT_EQ(decode_text(bytes.c_str(), page), icu::UnicodeString(bytes.c_str(), page))
        << page << " " << testing::PrintToString(bytes);
  }
}

TEST_F(CodePage, DecodeByteOrderMark_AsIcuDoes) {
  const char* const text =
      "\xEF\xBB\xBF"
      "a";
  for (const char* page : {"UTF-8", "utf8", "UTF8"}) EXPECT_EQ(decode_text(text, page), icu::UnicodeString(text, page));
  EXPECT_EQ(decode_text(text, ""), icu::UnicodeString(text));
}

TEST_F(CodePage, LengthExceeds_AsTheDecodedLength) {
  SeededRandom random;
  const char* const pages[] = {"", "UTF-8", "ISO-8859-1", "Shift_JIS", "GB18030", "ISO-2022-JP", "no such page"};
  for (int i = 0; i < 5000 && !testing::Test::HasFailure(); ++i) {
    const char* const page = pages[random.between(0, 6)];
    const std::string bytes = random.text(static_cast<std::size_t>(random.between(0, 40)));
    const int limit = static_cast<int>(random.between(0, 40));
    EXPECT_EQ(decoded_length_exceeds(bytes.c_str(), std::strlen(bytes.c_str()), page, limit),
              decode_text(bytes.c_str(), page).length() > limit)
        << page << " " << limit << " " << testing::PrintToString(bytes);
  }
}

TEST_F(CodePage, EncodeThatFitsExactly_NothingBehindIt) {
  char buffer[8] = {'#', '#', '#', '#', '#', '#', '#', '#'};
  int length = 0;
  EXPECT_TRUE(encode_text(u"漢字", "UTF-8", buffer, 6, length));
  EXPECT_EQ(length, 6);
  EXPECT_EQ(std::string(buffer, 8), "漢字##");
}

TEST_F(CodePage, EncodeOneByteShort_FalseAndTheLengthNeeded) {
  char buffer[8] = {'#', '#', '#', '#', '#', '#', '#', '#'};
  int length = 0;
  EXPECT_FALSE(encode_text(u"漢字", "UTF-8", buffer, 5, length));
  EXPECT_EQ(length, 6);
  EXPECT_EQ(std::string(buffer + 5, 3), "###");
}

TEST_F(CodePage, EncodeIntoAText_AsLongAsItGets) {
  std::string text = "what was there";
  ASSERT_TRUE(encode_text(u"", "UTF-8", text));
  EXPECT_EQ(text, "");
  icu::UnicodeString units;
  for (int i = 0; i < 1000; ++i) units += u"a\u3042";
  for (const char* const code_page : {"UTF-8", "ISO-2022-JP", "GB18030"}) {
    ASSERT_TRUE(encode_text(units, code_page, text)) << code_page;
    EXPECT_EQ(decode_text(text.c_str(), code_page), units) << code_page;
  }
  EXPECT_GT(text.size(), 2000U);
}

TEST_F(CodePage, EncodeIntoATextInAnUnknownCodePage_False) {
  std::string text;
  EXPECT_FALSE(encode_text(u"a", "no such page", text));
}

TEST_F(CodePage, EncodeUnknownCodePage_FalseAndNothingWritten) {
  char buffer[4] = {'#', '#', '#', '#'};
  int length = 0;
  EXPECT_FALSE(encode_text(u"a", "no such page", buffer, 4, length));
  EXPECT_EQ(std::string(buffer, 4), "####");
}

TEST_F(CodePage, EncodeWhatTheCodePageLacks_Replaced) {
  EXPECT_EQ(encoded("a漢b", "ISO-8859-1"),
            "a\x1A"
            "b");
  EXPECT_EQ(encoded("é", "US-ASCII"), "\x1A");
}

TEST_F(CodePage, ManyCodePagesInTurn_EachItsOwn) {
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(encoded("é", "ISO-8859-1"), "\xE9");
    EXPECT_EQ(encoded("é", "UTF-8"), "é");
    EXPECT_EQ(encoded("é", "IBM850"), "\x82");
    EXPECT_EQ(to_utf8(decode_text("\x82", "IBM850")), "é");
    EXPECT_EQ(to_utf8(decode_text("\xE9", "ISO-8859-1")), "é");
  }
}

// ---- A converter that is made once ----

std::string encoded_with(const SharedConverter& converter, const std::string& utf8) {
  char buffer[64];
  int length = 0;
  if (!converter.encode(from_utf8(utf8), buffer, sizeof(buffer), length)) return "(failed)";
  return std::string(buffer, static_cast<std::size_t>(length));
}

// Never destroyed, as their users are.
constinit SharedConverter first_wins;
constinit SharedConverter not_made;
constinit SharedConverter kept_failure;
constinit SharedConverter retried;
constinit SharedConverter stateful;

TEST(SharedConverter, MadeTwice_FirstCodePageStays) {
  EXPECT_TRUE(first_wins.make_once("ISO-8859-1", true));
  EXPECT_TRUE(first_wins.make_once("UTF-8", true));
  EXPECT_TRUE(first_wins.make_once("no such page", true));
  EXPECT_EQ(encoded_with(first_wins, "é"), "\xE9");
}

TEST(SharedConverter, NotMade_EncodeFails) { EXPECT_EQ(encoded_with(not_made, "a"), "(failed)"); }

TEST(SharedConverter, FailureKept_LaterCallsTakeItAsMadeAndEncodeFails) {
  EXPECT_FALSE(kept_failure.make_once("no such page", true));
  EXPECT_TRUE(kept_failure.make_once("UTF-8", true));
  EXPECT_EQ(encoded_with(kept_failure, "a"), "(failed)");
}

TEST(SharedConverter, FailureNotKept_NextCallTriesAgain) {
  EXPECT_FALSE(retried.make_once("no such page", false));
  EXPECT_EQ(encoded_with(retried, "a"), "(failed)");
  EXPECT_TRUE(retried.make_once("UTF-8", false));
  EXPECT_EQ(encoded_with(retried, "é"), "é");
}

TEST(SharedConverter, StatefulCodePage_EveryTextFromTheInitialState) {
  ASSERT_TRUE(stateful.make_once("ISO-2022-JP", true));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(encoded_with(stateful, "漢"), "\x1B$B4A\x1B(B");
  char small[4];
  int length = 0;
  EXPECT_FALSE(stateful.encode(u"漢字", small, sizeof(small), length));  // ends in the middle
  EXPECT_EQ(encoded_with(stateful, "a"), "a");
}

}  // namespace
}  // namespace qz_test
