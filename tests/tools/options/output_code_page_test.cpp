#include "tools/options/output_code_page.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tools/system/command_error.h"

namespace {

using qzlog_tool::CodePage;
using qzlog_tool::CommandError;

struct Conversion {
  const char* code_page;
  std::string text;
  std::string bytes;
};

void PrintTo(const Conversion& conversion, std::ostream* out) {
  *out << conversion.code_page << " " << conversion.text;
}

class CodePageConversion : public ::testing::TestWithParam<Conversion> {};

TEST_P(CodePageConversion, FromUtf8_GivesTheBytes) {
  const CodePage code_page(GetParam().code_page);
  std::string converted = "left over";
  ASSERT_TRUE(code_page.from_utf8(GetParam().text.c_str(), GetParam().text.size(), converted));
  EXPECT_EQ(converted, GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(Table, CodePageConversion,
                         ::testing::Values(Conversion{"ISO-8859-1", "K\u00E4se", "K\xE4se"},
                                           Conversion{"ISO-8859-1", "", ""}, Conversion{"ISO-8859-1", "\u65E5", "\x1A"},
                                           Conversion{"Shift_JIS", "\u65E5\u672C", "\x93\xFA\x96\x7B"},
                                           Conversion{"EUC-JP", "\u65E5\u672C", "\xC6\xFC\xCB\xDC"},
                                           Conversion{"ISO-2022-JP", "a\u65E5b", "a\x1B$BF|\x1B(Bb"},
                                           Conversion{"GB18030", "\U0001F600", "\x94\x39\xFC\x36"},
                                           Conversion{"utf8", "K\u00E4se", "K\u00E4se"}));

TEST(CodePage, LongText_IsConvertedWhole) {
  const CodePage code_page("ISO-2022-JP");
  std::string text;
  for (int count = 0; count < 100'000; ++count) text += "a\u65E5";
  std::string converted;
  ASSERT_TRUE(code_page.from_utf8(text.c_str(), text.size(), converted));
  EXPECT_EQ(converted.size(), 100'000u * 9);
}

TEST(CodePage, IsUtf8_OnlyForNamesOfUtf8) {
  for (const char* const name : {"UTF-8", "utf8", "UTF8", "utf-8"}) EXPECT_TRUE(CodePage(name).is_utf8()) << name;
  for (const char* const name : {"CESU-8", "GB18030", "US-ASCII", "windows-1252"}) {
    EXPECT_FALSE(CodePage(name).is_utf8()) << name;
  }
}

std::string refusal(const char* name) {
  try {
    const CodePage code_page(name);
    return "accepted";
  } catch (const CommandError& error) {
    return std::to_string(error.exit_status()) + " " + error.what();
  }
}

TEST(CodePage, UnknownName_IsRefused) {
  EXPECT_EQ(refusal("nonsense"), "2 no converter for the code page 'nonsense'");
  EXPECT_EQ(refusal(""), "2 no converter for the code page ''");
}

TEST(CodePage, OtherBytesThanAscii_AreRefused) {
  for (const char* const name : {"UTF-16", "UTF-16LE", "UTF-32", "ibm-1047"}) {
    EXPECT_EQ(refusal(name),
              std::string("2 the code page '") + name +
                  "' cannot be used for lines of text: its line ends, letters and digits are not those of ASCII");
  }
}

TEST(CodePage, OtherCharactersWithTheBytesOfLineEnds_AreRefused) {
  EXPECT_EQ(
      refusal("SCSU"),
      "2 the code page 'SCSU' cannot be used for lines of text: other characters hold the bytes of its line ends");
}

}  // namespace
