#include "lines/json_unescape.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

std::string decoded(std::string text) {
  char* const end = qzlog::decode_json_escapes(text.data(), text.data() + text.size());
  return end != nullptr ? std::string(text.data(), end) : "wrong";
}

TEST(DecodeJsonEscapes, RightOnes_BecomeWhatTheyStandFor) {
  const struct {
    const char* text;
    std::string characters;
  } cases[] = {{"", ""},
               {"plain", "plain"},
               {"\\\\n", "\\n"},
               {"a\\b\\f\\n\\r\\t\\\"\\\\\\/z", "a\b\f\n\r\t\"\\/z"},
               {"\\u0041\\u00e4\\u65E5\\uffff", "A\u00E4\u65E5\uFFFF"},
               {"\\ud83d\\ude00\\uD800\\uDC00\\udbff\\udfff", "\U0001F600\U00010000\U0010FFFF"},
               {"a\\u0000b", "a\0b"s}};
  for (const auto& row : cases) EXPECT_EQ(decoded(row.text), row.characters) << row.text;
}

TEST(DecodeJsonEscapes, WrongOnes_AreRefused) {
  for (const char* const text : {"\\", "a\\", "\\x", "\\u", "\\u123", "\\u12g4", "\\ud800", "\\ud800x", "\\ud800\\n",
                                 "\\ud800\\u0041", "\\ud800\\ud800", "\\udc00", "\\ud800\\u", "\\U0041"}) {
    EXPECT_EQ(decoded(text), "wrong") << text;
  }
}

}  // namespace
