#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "qzlog/logentry.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

using Convert = int (*)(const char*, char*, unsigned int&, const char*);

/// What a conversion gives into a buffer of `size` bytes with marks behind them: "result size bytes", where the bytes
/// are those up to the end of the marks.
struct Converted {
  int result;
  unsigned size;
  std::string memory;
};

Converted convert(Convert conversion, const char* source, unsigned size, const char* code_page) {
  Converted converted{0, size, std::string(size + 3, '#')};
  converted.result = conversion(source, converted.memory.data(), converted.size, code_page);
  return converted;
}

const Convert kTo = &qz_LOG_LogEntry::ConvertToUTF8;
const Convert kFrom = &qz_LOG_LogEntry::ConvertFromUTF8;

struct Pair {
  const char* code_page;
  const char* bytes;
  const char* utf8;
};

constexpr Pair kPairs[] = {
    {"UTF8", "é漢😀", "é漢😀"},
    {"UTF-8", "plain", "plain"},
    {"ISO-8859-1", "caf\xE9", "café"},
    {"windows-1252", "\x80", "€"},
    {"Shift_JIS", "\x8A\xBF\x8E\x9A", "漢字"},
    {"GB18030", "\x94\x39\xFC\x36", "😀"},
    {"EUC-KR", "\xC7\xD1", "한"},
    {"ISO-2022-JP", "a\x1B$B4A;z\x1B(Bb", "a漢字b"},
    {"UTF-7", "+bCI-", "氢"},
    {"IBM850", "\x82", "é"},
};

class ConvertCodePage : public testing::Test {
 protected:
  RenderingSettings settings_;
};

TEST_F(ConvertCodePage, TableToUtf8_TextTerminatorAndSize) {
  for (const Pair& pair : kPairs) {
    const std::string expected = pair.utf8;
    for (const unsigned spare : {0U, 1U, 50U}) {
      const auto size = static_cast<unsigned>(expected.size()) + spare;
      const Converted converted = convert(kTo, pair.bytes, size, pair.code_page);
      EXPECT_EQ(converted.result, 1) << pair.code_page;
      EXPECT_EQ(converted.size, expected.size()) << pair.code_page;
      EXPECT_EQ(converted.memory.substr(0, expected.size() + 1), expected + '\0') << pair.code_page;
      EXPECT_EQ(converted.memory.substr(size + 1), "##") << pair.code_page;
    }
  }
}

TEST_F(ConvertCodePage, TableFromUtf8_TextTerminatorAndSize) {
  for (const Pair& pair : kPairs) {
    const std::string expected = pair.bytes;
    for (const unsigned spare : {0U, 1U, 50U}) {
      const auto size = static_cast<unsigned>(expected.size()) + spare;
      const Converted converted = convert(kFrom, pair.utf8, size, pair.code_page);
      EXPECT_EQ(converted.result, 1) << pair.code_page;
      EXPECT_EQ(converted.size, expected.size()) << pair.code_page;
      EXPECT_EQ(converted.memory.substr(0, expected.size() + 1), expected + '\0') << pair.code_page;
      EXPECT_EQ(converted.memory.substr(size + 1), "##") << pair.code_page;
    }
  }
}

TEST_F(ConvertCodePage, OneByteTooSmall_ZeroAndNothingBehindTheSize) {
  for (const Pair& pair : kPairs) {
    for (const auto& [conversion, source, target] :
         {std::tuple(kTo, pair.bytes, pair.utf8), std::tuple(kFrom, pair.utf8, pair.bytes)}) {
      const auto size = static_cast<unsigned>(std::strlen(target)) - 1;
      if (size == 0) continue;
      const Converted converted = convert(conversion, source, size, pair.code_page);
      EXPECT_EQ(converted.result, 0) << pair.code_page;
      EXPECT_EQ(converted.size, size) << pair.code_page;
      EXPECT_EQ(converted.memory.substr(size), "###") << pair.code_page;
    }
  }
}

TEST_F(ConvertCodePage, NullArguments_ZeroAndSizeUnchanged) {
  for (const Convert conversion : {kTo, kFrom}) {
    char target[4] = "###";
    unsigned size = 3;
    EXPECT_EQ(conversion(nullptr, target, size, "UTF-8"), 0);
    EXPECT_EQ(conversion("a", nullptr, size, "UTF-8"), 0);
    EXPECT_EQ(conversion("a", target, size, nullptr), 0);
    EXPECT_EQ(size, 3U);
    EXPECT_STREQ(target, "###");
  }
}

TEST_F(ConvertCodePage, SizeZero_ZeroAndSizeUnchanged) {
  for (const Convert conversion : {kTo, kFrom}) {
    for (const char* source : {"", "a"}) {
      char target[4] = "###";
      unsigned size = 0;
      EXPECT_EQ(conversion(source, target, size, "UTF-8"), 0);
      EXPECT_EQ(size, 0U);
      EXPECT_STREQ(target, "###");
    }
  }
}

TEST_F(ConvertCodePage, EmptyText_OnlyATerminator) {
  for (const Convert conversion : {kTo, kFrom}) {
    const Converted converted = convert(conversion, "", 5, "ISO-8859-1");
    EXPECT_EQ(converted.result, 1);
    EXPECT_EQ(converted.size, 0U);
    EXPECT_EQ(converted.memory, std::string("\0#######", 8));
  }
}

TEST_F(ConvertCodePage, UnknownCodePage_ZeroAndNothingWritten) {
  for (const Convert conversion : {kTo, kFrom}) {
    const Converted converted = convert(conversion, "abc", 10, "no such page");
    EXPECT_EQ(converted.result, 0);
    EXPECT_EQ(converted.size, 10U);
    EXPECT_EQ(converted.memory, std::string(13, '#'));
  }
}

TEST_F(ConvertCodePage, CharactersThatTheCodePageLacks_Replaced) {
  EXPECT_EQ(convert(kFrom, "a漢b", 3, "ISO-8859-1").memory, std::string("a\x1A"
                                                                        "b\0##",
                                                                        6));
  EXPECT_EQ(convert(kFrom,
                    "a\xFF"
                    "b",
                    3, "ISO-8859-1")
                .memory,
            std::string("a\x1A"
                        "b\0##",
                        6));
}

TEST_F(ConvertCodePage, BytesThatStandForNothing_ReplacementCharacter) {
  const Converted converted = convert(kTo, "a\xE6\xBC", 4, "UTF-8");
  EXPECT_EQ(converted.result, 1);
  EXPECT_EQ(converted.memory.substr(0, 4), "a\uFFFD");
}

TEST_F(ConvertCodePage, TargetWithZeroBytes_SizeCountsThem) {
  const Converted converted = convert(kFrom, "a漢", 4, "UTF-16BE");
  EXPECT_EQ(converted.result, 1);
  EXPECT_EQ(converted.size, 4U);
  EXPECT_EQ(converted.memory, std::string("\0a\x6F\x22\0##", 7));
}

TEST_F(ConvertCodePage, SizeBeyondWhatIcuCounts_WritesOnlyTheText) {
  for (const unsigned huge : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    char target[8] = "#######";
    unsigned size = huge;
    EXPECT_EQ(qz_LOG_LogEntry::ConvertToUTF8("\xE9", target, size, "ISO-8859-1"), 1) << huge;
    EXPECT_EQ(size, 2U);
    EXPECT_STREQ(target, "é");
    EXPECT_EQ(std::string(target + 3, 4), "####");
  }
}

TEST_F(ConvertCodePage, LongTexts_Whole) {
  std::string latin;
  std::string utf8;
  for (int i = 0; i < 200000; ++i) {
    latin += "\xE9x";
    utf8 += "éx";
  }
  const Converted there = convert(kTo, latin.c_str(), static_cast<unsigned>(utf8.size()), "ISO-8859-1");
  EXPECT_EQ(there.result, 1);
  EXPECT_EQ(there.memory.substr(0, utf8.size()), utf8);
  const Converted back = convert(kFrom, utf8.c_str(), static_cast<unsigned>(latin.size()), "ISO-8859-1");
  EXPECT_EQ(back.result, 1);
  EXPECT_EQ(back.memory.substr(0, latin.size()), latin);
}

TEST_F(ConvertCodePage, FailureInTheMiddleOfAStatefulText_NextStartsAfresh) {
  EXPECT_EQ(convert(kFrom, "漢字", 5, "ISO-2022-JP").result, 0);
  const Converted converted = convert(kFrom, "a", 1, "ISO-2022-JP");
  EXPECT_EQ(converted.result, 1);
  EXPECT_EQ(converted.memory, std::string("a\0##", 4));
}

TEST_F(ConvertCodePage, WritesNoDebugRecord) {
  const DebugLogFile log(9);
  EXPECT_EQ(convert(kTo, "a", 5, "no such page").result, 0);
  EXPECT_EQ(convert(kFrom, "abc", 2, "UTF-8").result, 0);
  EXPECT_EQ(convert(kTo, nullptr, 2, "UTF-8").result, 0);
  EXPECT_FALSE(log.exists());
}

TEST_F(ConvertCodePage, NoMemory_ZeroAndNothingThrown) {
  for (const Convert conversion : {kTo, kFrom}) {
    for (unsigned nth = 1; nth < 20; ++nth) {
      char target[16];
      unsigned size = 10;
      int result = -1;
      bool happened = false;
      {
        const AllocationFailure failure(nth);
        result = conversion("abc", target, size, nth % 2 == 0 ? "IBM850" : "windows-1252");
        happened = failure.happened();
      }
      EXPECT_EQ(result, happened ? 0 : 1) << nth;
    }
  }
}

TEST_F(ConvertCodePage, RandomTextsThereAndBack_Same) {
  SeededRandom random;
  for (const char* page : {"UTF-8", "UTF-16", "UTF-32", "GB18030", "UTF-7", "SCSU"}) {
    for (int i = 0; i < 300; ++i) {
      icu::UnicodeString text;
      for (long long left = random.between(0, 30); left > 0; --left) {
        const auto character = static_cast<UChar32>(random.between(1, 0x10FFFF));
        if (!U_IS_SURROGATE(character) && U_IS_UNICODE_CHAR(character)) text.append(character);
      }
      const std::string utf8 = to_utf8(text);
      const Converted there = convert(kFrom, utf8.c_str(), 500, page);
      ASSERT_EQ(there.result, 1) << page;
      if (std::strlen(there.memory.c_str()) != there.size) continue;  // zero bytes: no source for the way back
      const Converted back = convert(kTo, there.memory.c_str(), static_cast<unsigned>(utf8.size()) + 3, page);
      ASSERT_EQ(back.result, 1) << page;
      EXPECT_EQ(std::string(back.memory.c_str()), utf8) << page;
    }
  }
}

}  // namespace
}  // namespace qz_test
