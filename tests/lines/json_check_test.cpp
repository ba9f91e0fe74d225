#include "lines/json_check.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

std::string outcome(const std::string& text) {
  qzlog::JsonFault fault{};
  if (qzlog::check_json(text, fault)) return "right";
  return fault.reason + (" at " + std::to_string(fault.place)) + (fault.ends_early ? " (early)" : "");
}

TEST(CheckJson, WhatIsWrong_IsSaidWithItsPlace) {
  constexpr const char* kValue = "a value has to be a text, a number, an array, an object, true, false or null";
  const struct {
    std::string text;
    std::string outcome;
  } cases[] = {
      {"", "it ends where a value has to stand at 0 (early)"},
      {" {", "a key in double quotes has to stand here at 2 (early)"},
      {"{\"a\"", "a colon has to follow a key at 4 (early)"},
      {"{\"a\":", "it ends where a value has to stand at 5 (early)"},
      {"{\"a\":1", "a comma or '}' has to stand here at 6 (early)"},
      {"[1", "a comma or ']' has to stand here at 2 (early)"},
      {"{\"a\":1]", "a comma or '}' has to stand here at 6"},
      {"{\"a\":1,}", "a key in double quotes has to stand here at 7"},
      {"[1,]", kValue + " at 3"s},
      {"{} x", "something follows its end at 3"},
      {"hello", kValue + " at 0"s},
      {"tru", kValue + " at 3 (early)"s},
      {"trux", kValue + " at 3"s},
      {"\"abc", "a text has no end at 4 (early)"},
      {"\"a\tb\"", "a control character stands in a text: it has to be escaped at 2"},
      {"\"a\0b\""s, "a zero byte at 2"},
      {"\0\0\0"s, "a zero byte at 0"},
      {"{\"a\":1}\0\0"s, "a zero byte at 7"},
      {"\"\\x41\"", "no such escape at 2"},
      {"\"\\", "no such escape at 2 (early)"},
      {"\"\\u12", "four hexadecimal digits have to follow \\u at 5 (early)"},
      {"\"\\u12g4\"", "four hexadecimal digits have to follow \\u at 5"},
      {"\"\\ud800\"", "half of a surrogate pair at 1"},
      {"\"\\ud800\\u0041\"", "half of a surrogate pair at 1"},
      {"\"\\udc00\"", "half of a surrogate pair at 1"},
      {"\"\\ud800", "half of a surrogate pair at 7 (early)"},
      {"\"\\ud800\\", "half of a surrogate pair at 8 (early)"},
      {"\"\\ud800\\u", "four hexadecimal digits have to follow \\u at 9 (early)"},
      {"01", "a number lacks a digit, or has a leading zero at 1"},
      {"1.", "a number lacks a digit, or has a leading zero at 2 (early)"},
      {"[1.]", "a number lacks a digit, or has a leading zero at 3"},
      {"-", "a number lacks a digit, or has a leading zero at 1 (early)"},
      {"1e400", "a number needs more than 64 bits at 0"},
      {"18446744073709551616", "a number needs more than 64 bits at 0"},
      {"\"\xC3\x28\"", "bytes that are not UTF-8 at 1"},
      {"\"\xC3", "a text has no end at 2 (early)"},
      {"\"\xF0\x9F\x98", "a text has no end at 4 (early)"},
      {"\"\xFF", "bytes that are not UTF-8 at 1"},
      {"\"\xC3\x28", "bytes that are not UTF-8 at 1"},
      {"\xEF\xBB\xBF{}", kValue + " at 0"s},
  };
  for (const auto& row : cases) EXPECT_EQ(outcome(row.text), row.outcome) << row.text;
}

TEST(CheckJson, DeepestNesting_IsRightAndOneLevelMoreIsNot) {
  const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  EXPECT_EQ(outcome(nested(qzlog::kMaximumJsonDepth)), "right");
  EXPECT_EQ(outcome(nested(qzlog::kMaximumJsonDepth + 1)),
            "more than 1024 arrays and objects stand within each other at 1024");
  EXPECT_EQ(outcome(std::string(1000000, '[')), "more than 1024 arrays and objects stand within each other at 1024");
}

}  // namespace
