#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <string>

#include "message/code_page.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace qz_test {
namespace {

std::string hex(const std::string& bytes) {
  std::string text;
  char two[4];
  for (const char byte : bytes) {
    std::snprintf(two, sizeof(two), "%02X ", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    text += two;
  }
  return text;
}

// ---- is_valid_utf8 ----

/// Whether ICU decodes the bytes without putting anything in the place of bad ones. Quick: there are millions.
bool decodes_whole(const char* bytes, int length) {
  UChar units[64];
  int decoded = 0;
  int replaced = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8WithSub(units, 64, &decoded, bytes, length, 0xFFFD, &replaced, &status);
  return U_SUCCESS(status) && replaced == 0;
}

bool survives_the_way_over_unicode(const std::string& bytes) {
  return to_utf8(from_utf8(bytes)) == bytes && decodes_whole(bytes.data(), static_cast<int>(bytes.size()));
}

bool is_valid(const std::string& bytes) { return is_valid_utf8(bytes.data(), bytes.size()); }

TEST(ValidUtf8, NoBytes_Valid) {
  EXPECT_TRUE(is_valid_utf8("", 0));
  EXPECT_TRUE(is_valid_utf8("\xFF", 0));
}

TEST(ValidUtf8, BytesBehindTheLength_NotRead) {
  EXPECT_TRUE(is_valid_utf8("a\xFF", 1));
  EXPECT_FALSE(is_valid_utf8("\xC3\xA9", 1));
  EXPECT_TRUE(is_valid_utf8("12345678\xFF", 8));
}

TEST(ValidUtf8, EverySequenceOfOneAndTwoBytes_AsIcuDecodesAndEncodes) {
  for (unsigned first = 0; first < 256; ++first) {
    ASSERT_EQ(is_valid({static_cast<char>(first)}), survives_the_way_over_unicode({static_cast<char>(first)})) << first;
    for (unsigned second = 0; second < 256; ++second) {
      const std::string bytes = {static_cast<char>(first), static_cast<char>(second)};
      ASSERT_EQ(is_valid(bytes), survives_the_way_over_unicode(bytes)) << hex(bytes);
    }
  }
}

TEST(ValidUtf8, EverySequenceOfThreeBytes_AsIcuDecodes) {
  char bytes[3];
  for (unsigned value = 0; value < 1U << 24; ++value) {
    bytes[0] = static_cast<char>(value >> 16);
    bytes[1] = static_cast<char>(value >> 8);
    bytes[2] = static_cast<char>(value);
    if (is_valid_utf8(bytes, 3) != decodes_whole(bytes, 3)) FAIL() << hex(std::string(bytes, 3));
  }
}

TEST(ValidUtf8, FourBytesOfEveryLeadAndTheLimitsOfTheOthers_AsIcuDecodes) {
  const unsigned limits[] = {0x00, 0x41, 0x7F, 0x80, 0x81, 0x8F, 0x90, 0x9F,
                             0xA0, 0xBE, 0xBF, 0xC0, 0xC2, 0xE0, 0xF0, 0xFF};
  for (unsigned lead = 0x80; lead < 256; ++lead) {
    for (unsigned second = 0; second < 256; ++second) {
      for (const unsigned third : limits) {
        for (const unsigned fourth : limits) {
          const char bytes[] = {static_cast<char>(lead), static_cast<char>(second), static_cast<char>(third),
                                static_cast<char>(fourth)};
          if (is_valid_utf8(bytes, 4) != decodes_whole(bytes, 4)) FAIL() << hex(std::string(bytes, 4));
        }
      }
    }
  }
}

TEST(ValidUtf8, EveryCodePoint_ValidUnlessASurrogate) {
  for (unsigned code_point = 0; code_point <= 0x110000; ++code_point) {
    char bytes[4];
    std::size_t length = 0;
    if (code_point < 0x80) {
      bytes[length++] = static_cast<char>(code_point);
    } else if (code_point < 0x800) {
      bytes[length++] = static_cast<char>(0xC0 | code_point >> 6);
    } else if (code_point < 0x10000) {
      bytes[length++] = static_cast<char>(0xE0 | code_point >> 12);
    } else {
      bytes[length++] = static_cast<char>(0xF0 | code_point >> 18);
      bytes[length++] = static_cast<char>(0x80 | (code_point >> 12 & 0x3F));
    }
    if (code_point >= 0x800) bytes[length++] = static_cast<char>(0x80 | (code_point >> 6 & 0x3F));
    if (code_point >= 0x80) bytes[length++] = static_cast<char>(0x80 | (code_point & 0x3F));
    const bool wanted = (code_point < 0xD800 || code_point > 0xDFFF) && code_point < 0x110000;
    if (is_valid_utf8(bytes, length) != wanted) FAIL() << std::hex << code_point;
    for (std::size_t cut = 1; cut < length; ++cut) {
      if (is_valid_utf8(bytes, cut)) FAIL() << std::hex << code_point << " cut after " << cut;
    }
  }
}

TEST(ValidUtf8, AtEveryPlaceOfALongerText_AsByItself) {
  const char* const sequences[] = {"é",
                                   "漢",
                                   "😀",
                                   "\xC3",
                                   "\xE6\xBC",
                                   "\xF0\x9F\x98",
                                   "\x80",
                                   "\xC0\x80",
                                   "\xED\xA0\x80",
                                   "\xE0\x80\x80",
                                   "\xF4\x90\x80\x80",
                                   "\xF8"};
  for (const std::string sequence : sequences) {
    for (std::size_t before = 0; before <= 20; ++before) {
      for (std::size_t behind = 0; behind <= 20; ++behind) {
        const std::string text = std::string(before, 'a') + sequence + std::string(behind, 'z');
        ASSERT_EQ(is_valid(text), survives_the_way_over_unicode(sequence)) << hex(text);
      }
    }
  }
}

TEST(ValidUtf8, RandomLongerTexts_AsIcuDecodesAndEncodes) {
  SeededRandom random;
  const char* const pieces[] = {"a",      "bcdefgh", "ijklmnop", "é", "ß",         "漢",
                                "\uFFFD", "\uD7FF",  "\uE000",   "😀", "\U0010FFFF"};
  int valid = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string text;
    for (long long left = random.between(0, 8); left > 0; --left) text += pieces[random.between(0, 10)];
    if (!text.empty() && random.one_in(2)) {
      text[static_cast<std::size_t>(random.between(0, static_cast<long long>(text.size()) - 1))] =
          static_cast<char>(random.between(0, 255));
    }
    const bool wanted = survives_the_way_over_unicode(text);
    valid += wanted ? 1 : 0;
    ASSERT_EQ(is_valid(text), wanted) << hex(text);
  }
  EXPECT_GT(valid, 50000);
  EXPECT_LT(valid, 190000);
}

// ---- is_utf8 ----

constexpr const char* kNames[] = {"UTF-8",  "UTF8",   "utf-8",           "utf8",       "Utf_8",   "u.t.f.8", "UTF-08",
                                  "UTF 8",  " UTF-8", "UTF-8 ",          "UTF",        "UTF-",    "8",       "UTF-80",
                                  "UTF-88", "UTF-7",  "UTF-16",          "CESU-8",     "x-UTF-8", "UTF-8x",  "ibm-1208",
                                  "cp1208", "1208",   "UTF-8,version=1", "ISO-8859-1", "é",       "\xFF",    "UTF-8\n",
                                  "\tUTF8", "UTF--8", "UTF-0008"};

class Utf8Names : public testing::Test {
 protected:
  RenderingSettings settings_;  // sets back the default converter's name
};

TEST_F(Utf8Names, NamesInUseAndOddOnes_AsIcuCompares) {
  for (const char* const name : kNames) EXPECT_EQ(is_utf8(name), ucnv_compareNames(name, "UTF-8") == 0) << name;
  EXPECT_TRUE(is_utf8("UTF-8"));
  EXPECT_TRUE(is_utf8("utf8"));
  EXPECT_FALSE(is_utf8("ISO-8859-1"));
}

TEST_F(Utf8Names, EmptyName_AsIcusDefaultConverter) {
  EXPECT_TRUE(is_utf8(""));
  for (const char* const name : {"ISO-8859-1", "UTF-8", "windows-1251", "utf8"}) {
    ucnv_setDefaultName(name);
    EXPECT_EQ(is_utf8(""), ucnv_compareNames(ucnv_getDefaultName(), "UTF-8") == 0) << name;
  }
  ucnv_setDefaultName("UTF-8");
}

// ---- append_utf8 ----

bool has_half_a_pair(const icu::UnicodeString& text) {
  for (int i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    if (U_IS_SURROGATE(text.char32At(i))) return true;
  }
  return false;
}

void expect_appended(const icu::UnicodeString& text, std::size_t before) {
  TextBuffer buffer;
  const std::string former(before, 'f');
  buffer.append(former.data(), former.size());
  const bool wanted = !has_half_a_pair(text);
  ASSERT_EQ(append_utf8(text, buffer), wanted);
  ASSERT_EQ(std::string(buffer.data(), buffer.size()), wanted ? former + to_utf8(text) : former);
  buffer.append("more");
  ASSERT_EQ(std::string(buffer.data(), buffer.size()), (wanted ? former + to_utf8(text) : former) + "more");
}

TEST(AppendUtf8, TextsWithAndWithoutHalvesOfPairs_WholeOrNothing) {
  const icu::UnicodeString texts[] = {icu::UnicodeString(),
                                      icu::UnicodeString(u"plain"),
                                      icu::UnicodeString(u"é漢😀"),
                                      icu::UnicodeString(UChar{0xD83D}),
                                      icu::UnicodeString(UChar{0xDE00}),
                                      icu::UnicodeString(u"a") + UChar{0xD83D},
                                      icu::UnicodeString(u"a") + UChar{0xDE00} + UChar{0xD83D},
                                      icu::UnicodeString(UChar{0xD83D}) + u"\U0001F600",
                                      icu::UnicodeString(u"zero ") + UChar{0} + u" inside",
                                      icu::UnicodeString(UChar{0xFFFF}) + UChar{0xFFFE} + UChar{0xD7FF} + UChar{0xE000},
                                      icu::UnicodeString(5000, UChar32{0x6F22}, 5000)};
  for (const icu::UnicodeString& text : texts) {
    for (const std::size_t before : {0U, 1U, 1000U, 1024U}) expect_appended(text, before);
  }
}

TEST(AppendUtf8, BogusText_NothingAppended) {
  icu::UnicodeString text;
  text.setToBogus();
  TextBuffer buffer;
  buffer.append('a');
  EXPECT_TRUE(append_utf8(text, buffer));
  EXPECT_EQ(std::string(buffer.data(), buffer.size()), "a");
}

TEST(AppendUtf8, RandomTexts_WholeOrNothing) {
  SeededRandom random;
  const UChar units[] = {u'a',          u'\u00E9',     u'\u6F22',     UChar{0xD83D},
                         UChar{0xDE00}, UChar{0xD800}, UChar{0xDFFF}, u'\uFFFF'};
  for (int i = 0; i < 50000 && !testing::Test::HasFatalFailure(); ++i) {
    icu::UnicodeString text;
    for (long long left = random.between(0, 8); left > 0; --left) {
      if (random.one_in(3)) {
        text.append(UChar32{0x1F600});
      } else {
        text.append(units[random.one_in(3) ? random.between(0, 7) : random.between(0, 2)]);
      }
    }
    expect_appended(text, static_cast<std::size_t>(random.one_in(2) ? random.between(1000, 1030) : 0));
  }
}

}  // namespace
}  // namespace qz_test
