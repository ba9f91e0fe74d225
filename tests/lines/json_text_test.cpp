#include "lines/json_text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace qzlog {
namespace {

std::string written(std::string_view text) {
  std::string json = "before:";
  append_json_text(text, json);
  EXPECT_EQ(json.rfind("before:", 0), 0U);
  return json.substr(7);
}

TEST(AppendJsonText, Utf8_StandsForItself) {
  EXPECT_EQ(written(""), "\"\"");
  for (const char* text :
       {"a", "\x7F", "\u0080", "Gr\u00FC\u00DFe", "\u07FF\u0800\uD7FF\uE000\uFFFF", "\U00010000\U0010FFFF", "/'"}) {
    EXPECT_EQ(written(text), '"' + std::string(text) + '"');
  }
}

TEST(AppendJsonText, ControlsQuotesAndBackslashes_AreEscaped) {
  EXPECT_EQ(written("\"\\\b\f\n\r\t"), R"("\"\\\b\f\n\r\t")");
  EXPECT_EQ(written(std::string_view("\0\1\x0B\x0E\x10\x1F", 6)), R"("\u0000\u0001\u000b\u000e\u0010\u001f")");
}

struct BrokenText {
  std::string_view text;
  int replacements;
};

TEST(AppendJsonText, WhatIsNoUtf8_OneReplacementForEachBeginning) {
  const BrokenText cases[] = {
      {"\x80", 1},         {"\xBF\xBF", 2},         {"\xC0\x80", 2},         {"\xC1\xBF", 2},
      {"\xC2", 1},         {"\xE0\x80\x80", 3},     {"\xE0\xA0", 1},         {"\xED\xA0\x80", 3},
      {"\xED\xBF\xBF", 3}, {"\xEF\xBF", 1},         {"\xF0\x80\x80\x80", 4}, {"\xF0\x9F\x98", 1},
      {"\xF4\x8F\xBF", 1}, {"\xF4\x90\x80\x80", 4}, {"\xF5\x80\x80\x80", 4}, {"\xFF\xFE", 2},
  };
  for (const BrokenText& broken : cases) {
    std::string expected = "\"<";
    for (int i = 0; i < broken.replacements; ++i) expected += "\uFFFD";
    EXPECT_EQ(written("<" + std::string(broken.text) + ">"), expected + ">\"") << testing::PrintToString(broken.text);
    EXPECT_EQ(written("<" + std::string(broken.text)), expected + "\"") << testing::PrintToString(broken.text);
  }
}

TEST(AppendJsonText, LongText_IsWhole) {
  for (const char* const part : {"x", "\xFF", "\u20AC", "\n"}) {
    const std::string one = written(part).substr(1, written(part).size() - 2);
    std::string text;
    std::string expected = "\"";
    for (int i = 0; i < 50000; ++i) {
      text += part;
      expected += one;
    }
    EXPECT_TRUE(written(text) == expected + '"') << one;
  }
}

}  // namespace
}  // namespace qzlog
