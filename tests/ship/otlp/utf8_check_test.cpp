#include "ship/otlp/utf8_check.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace qzlog_ship {
namespace {

using namespace std::string_view_literals;

TEST(Utf8Check, WellFormed_IsTaken) {
  for (const std::string_view text :
       {""sv, "abc"sv, "\0"sv, "\x7F"sv, "\xC2\x80"sv, "\xDF\xBF"sv, "\xE0\xA0\x80"sv, "\xED\x9F\xBF"sv,
        "\xEE\x80\x80"sv, "\xEF\xBF\xBF"sv, "\xF0\x90\x80\x80"sv, "\xF4\x8F\xBF\xBF"sv}) {
    for (const std::size_t before : {0U, 1U, 7U, 8U, 9U}) {
      EXPECT_TRUE(is_utf8(std::string(before, 'x') + std::string(text) + "yyyyyyyyy")) << text;
      EXPECT_TRUE(is_utf8(std::string(before, 'x') + std::string(text))) << text;
    }
  }
}

TEST(Utf8Check, OtherBytes_AreNot) {
  for (const std::string_view text :
       {"\x80"sv, "\xBF"sv, "\xC0\x80"sv, "\xC1\xBF"sv, "\xC2"sv, "\xC2x"sv, "\xE0\x9F\xBF"sv, "\xED\xA0\x80"sv,
        "\xE2\x82"sv, "\xF0\x8F\xBF\xBF"sv, "\xF4\x90\x80\x80"sv, "\xF5\x80\x80\x80"sv, "\xFF"sv, "\xF0\x90\x80"sv}) {
    for (const std::size_t before : {0U, 1U, 7U, 8U, 9U}) {
      EXPECT_FALSE(is_utf8(std::string(before, 'x') + std::string(text) + "yyyyyyyyy")) << text;
      EXPECT_FALSE(is_utf8(std::string(before, 'x') + std::string(text))) << text;
    }
  }
}

}  // namespace
}  // namespace qzlog_ship
