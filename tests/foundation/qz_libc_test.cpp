#include "foundation/qz_libc.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/support.h"

namespace {

using qz_test::SeededRandom;
using qz_test::SetEnv;
using qz_test::TempDir;
using qz_test::Texts;
using qz_test::UnsetEnv;

int sign(int value) { return value < 0 ? -1 : value > 0 ? 1 : 0; }

TEST(QzStrto4u, Table_LeadingDigits) {
  const struct {
    const char* text;
    unsigned value;
  } cases[] = {{"0", 0},
               {"7", 7},
               {"007", 7},
               {"12", 12},
               {"12abc", 12},
               {"12 34", 12},
               {"1.5", 1},
               {"0x10", 0},
               {"4294967294", 4294967294U},
               {"4294967295", 4294967295U},
               {"0000000000004294967295", 4294967295U},
               {"4294967295x", 4294967295U}};
  for (const auto& c : cases) EXPECT_EQ(QZ_strto4u(c.text), c.value) << c.text;
}

TEST(QzStrto4u, NoDigits_Zero) {
  for (const char* text : {"", "abc", "-", "-1", "+5", " 12", "\t3", "x9"}) EXPECT_EQ(QZ_strto4u(text), 0U) << text;
}

TEST(QzStrto4u, Overflow_LargestValue) {
  for (const char* text : {"4294967296", "4294967300", "9999999999", "18446744073709551616", "42949672950",
                           "99999999999999999999999999999999999999", "4294967296tail"}) {
    EXPECT_EQ(QZ_strto4u(text), 4294967295U) << text;
  }
}

TEST(QzStrto4u, RandomValues_ReadBack) {
  SeededRandom random;
  for (int i = 0; i < 5000; ++i) {
    const auto value = static_cast<unsigned>(random.between(0, 4294967295LL) >> random.between(0, 31));
    ASSERT_EQ(QZ_strto4u(std::to_string(value).c_str()), value);
  }
}

TEST(QzHexto4u, Table_AfterThePrefix) {
  const struct {
    const char* text;
    unsigned value;
  } cases[] = {{"0x0", 0},
               {"0x1F", 31},
               {"0x1f", 31},
               {"0X1F", 31},
               {"0xfF", 255},
               {"0xabcdef", 0xABCDEF},
               {"0xABCDEF", 0xABCDEF},
               {"0x12G", 18},
               {"0x12 34", 18},
               {"0x00000000000000001", 1},
               {"0xFFFFFFFE", 4294967294U},
               {"0xFFFFFFFF", 4294967295U},
               {"0x80000000", 2147483648U}};
  for (const auto& c : cases) EXPECT_EQ(QZ_hexto4u(c.text), c.value) << c.text;
}

TEST(QzHexto4u, NoDigits_Zero) {
  for (const char* text : {"0x", "0X", "0xG", "0x-1", "0x+1", "0x 1", "0x0x5", ""})
    EXPECT_EQ(QZ_hexto4u(text), 0U) << text;
}

TEST(QzHexto4u, Overflow_LargestValue) {
  for (const char* text : {"0x100000000", "0xFFFFFFFFF", "0x1FFFFFFFFFFFFFFFF", "0X123456789abcdef0123456789"}) {
    EXPECT_EQ(QZ_hexto4u(text), 4294967295U) << text;
  }
}

TEST(QzStrings, RandomTexts_CompareAsTheSystemLibrary) {
  SeededRandom random;
  for (int i = 0; i < 2000; ++i) {
    const std::string left = random.text(static_cast<std::size_t>(random.between(0, 3)));
    const std::string right = random.one_in(4) ? left : random.text(static_cast<std::size_t>(random.between(0, 3)));
    const auto count = static_cast<std::size_t>(random.between(0, 4));
    EXPECT_EQ(sign(QZ_strcmp(left.c_str(), right.c_str())), sign(std::strcmp(left.c_str(), right.c_str())));
    EXPECT_EQ(sign(QZ_strncmp(left.c_str(), right.c_str(), count)),
              sign(std::strncmp(left.c_str(), right.c_str(), count)));
    EXPECT_EQ(QZ_strlen(left.c_str()), left.size());
  }
}

TEST(QzStrcpy, Text_CopiedWithItsTerminator) {
  char target[8] = "#######";
  EXPECT_EQ(QZ_strcpy(target, "abc"), target);
  EXPECT_EQ(std::string(target, 8), std::string("abc\0###", 8));
}

TEST(QzStrncpy, ShortText_PaddedWithZeroBytesToTheCount) {
  char target[8] = "#######";
  EXPECT_EQ(QZ_strncpy(target, "ab", 5), target);
  EXPECT_EQ(std::string(target, 8), std::string("ab\0\0\0##", 8));
}

TEST(QzStrncpy, LongText_CutWithoutTerminator) {
  char target[8] = "#######";
  QZ_strncpy(target, "abcdef", 3);
  EXPECT_STREQ(target, "abc####");
}

TEST(QzMemcpy, Bytes_CopiedZeroBytesIncluded) {
  char target[4] = "###";
  EXPECT_EQ(QZ_memcpy(target, "a\0b", 3), target);
  EXPECT_EQ(std::string(target, 3), std::string("a\0b", 3));
}

TEST(QzBzero, Count_ThatManyBytesAreZero) {
  char target[6] = "#####";
  QZ_bzero(target, 3);
  EXPECT_EQ(std::string(target, 5), std::string("\0\0\0##", 5));
  QZ_bzero(target + 3, 0);
  EXPECT_EQ(target[3], '#');
}

TEST(QzSprintf, Format_WritesTheTextAndReturnsItsLength) {
  char target[64];
  EXPECT_EQ(QZ_sprintf(target, "%s.%04u%02u %% %f", "name", 12U, 3U, 2.5), 22);
  EXPECT_STREQ(target, "name.001203 % 2.500000");
}

TEST(QzGetenv, Variable_ItsValueOrNull) {
  const SetEnv set("QZLOG_TEST_VARIABLE", "a value");
  EXPECT_STREQ(QZ_getenv("QZLOG_TEST_VARIABLE"), "a value");
  const UnsetEnv unset("QZLOG_TEST_VARIABLE");
  EXPECT_EQ(QZ_getenv("QZLOG_TEST_VARIABLE"), nullptr);
}

TEST(QzStrdup, Text_IsCopied) {
  char text[] = "text";
  char* copy = QZ_strdup(text);
  text[0] = '#';
  EXPECT_STREQ(copy, "text");
  QZ_free(copy);
}

TEST(QzStrdup, EmptyText_IsAnEmptyCopy) {
  char* copy = QZ_strdup("");
  EXPECT_STREQ(copy, "");
  QZ_free(copy);
}

TEST(QzStrdup, Null_IsNull) { EXPECT_EQ(QZ_strdup(nullptr), nullptr); }

TEST(QzStrdup, NoMemory_Null) {
  const char* copy = "not null";
  {
    const qz_test::AllocationFailure failure(1);
    copy = QZ_strdup("text");
  }
  EXPECT_EQ(copy, nullptr);
}

TEST(QzFree, Null_Allowed) {
  QZ_free(nullptr);
  SUCCEED();
}

Texts tokens(char* (*tokenize)(char*, const char*), std::string text, const std::vector<std::string>& delimiters) {
  Texts found;
  char* start = text.data();
  for (std::size_t i = 0; i < 40; ++i) {
    const char* token = tokenize(start, delimiters[i % delimiters.size()].c_str());
    found.emplace_back(token == nullptr ? "(null)" : token);
    start = nullptr;
  }
  return found;
}

TEST(QzStrtok, Text_SplitsAtRunsOfDelimiters) {
  char text[] = ",,one,;two;,";
  EXPECT_STREQ(QZ_strtok(text, ",;"), "one");
  EXPECT_STREQ(QZ_strtok(nullptr, ",;"), "two");
  EXPECT_EQ(QZ_strtok(nullptr, ",;"), nullptr);
  EXPECT_EQ(QZ_strtok(nullptr, ",;"), nullptr);
}

TEST(QzStrtok, NewTextInBetween_StartsOver) {
  char first[] = "a b c";
  char second[] = "x y";
  EXPECT_STREQ(QZ_strtok(first, " "), "a");
  EXPECT_STREQ(QZ_strtok(second, " "), "x");
  EXPECT_STREQ(QZ_strtok(nullptr, " "), "y");
  EXPECT_EQ(QZ_strtok(nullptr, " "), nullptr);
}

TEST(QzStrtok, RandomTextsAndChangingDelimiters_AsStrtok) {
  SeededRandom random;
  for (int i = 0; i < 2000; ++i) {
    std::string text(static_cast<std::size_t>(random.between(0, 30)), ' ');
    for (char& character : text) character = "ab,;="[random.between(0, 4)];
    std::vector<std::string> delimiters;
    for (int d = 0; d < 3; ++d) delimiters.emplace_back(random.one_in(5) ? "" : random.one_in(2) ? ",;" : "=");
    ASSERT_EQ(tokens(QZ_strtok, text, delimiters), tokens(std::strtok, text, delimiters)) << text;
  }
}

TEST(QzStdio, OpenedFile_IsClosedInProgramsThatAreStarted) {
  const TempDir folder;
  for (const char* const mode : {"w+b", "rb", "rb+", "a+"}) {
    std::FILE* file = QZ_fopen(folder.path("data").c_str(), mode);
    ASSERT_NE(file, nullptr) << mode;
    EXPECT_EQ(fcntl(fileno(file), F_GETFD), FD_CLOEXEC) << mode;
    QZ_fclose(file);
  }
}

TEST(QzStdio, WriteSeekTellRead_AsStdio) {
  const TempDir folder;
  std::FILE* file = QZ_fopen(folder.path("data").c_str(), "w+b");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(QZ_fwrite("abcdef", 2, 3, file), 3U);
  EXPECT_EQ(QZ_ftell(file), 6);
  EXPECT_EQ(QZ_fflush(file), 0);
  EXPECT_EQ(folder.read("data"), "abcdef");
  EXPECT_EQ(QZ_fseek(file, -5, SEEK_END), 0);
  char buffer[8] = "";
  EXPECT_EQ(QZ_fread(buffer, 2, 3, file), 2U);
  EXPECT_STREQ(buffer, "bcdef");
  EXPECT_NE(QZ_feof(file), 0);
  EXPECT_EQ(QZ_fseek(file, 1, SEEK_SET), 0);
  EXPECT_EQ(QZ_feof(file), 0);
  EXPECT_NE(QZ_fseek(file, -1, SEEK_SET), 0);
  EXPECT_EQ(QZ_ftell(file), 1);
  EXPECT_EQ(QZ_fclose(file), 0);
}

TEST(QzStdio, OffsetsBeyondFourGigabytes_AreKept) {
  const TempDir folder;
  constexpr long long kFar = 5'000'000'000;
  std::FILE* file = QZ_fopen(folder.path("sparse").c_str(), "w+b");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(QZ_fseek(file, kFar, SEEK_SET), 0);
  EXPECT_EQ(QZ_ftell(file), kFar);
  EXPECT_EQ(QZ_fclose(file), 0);
}

TEST(QzFopen, MissingFileOrFolder_Null) {
  const TempDir folder;
  EXPECT_EQ(QZ_fopen(folder.path("missing").c_str(), "rb"), nullptr);
  EXPECT_EQ(QZ_fopen(folder.path("missing/file").c_str(), "wb"), nullptr);
}

TEST(QzFclose, UnwrittenRestRefused_Eof) {
  std::FILE* file = QZ_fopen("/dev/full", "wb");
  if (file == nullptr) GTEST_SKIP() << "no /dev/full";
  EXPECT_EQ(QZ_fwrite("abc", 1, 3, file), 3U);
  EXPECT_EQ(QZ_fflush(file), EOF);
  QZ_fclose(file);
}

}  // namespace
