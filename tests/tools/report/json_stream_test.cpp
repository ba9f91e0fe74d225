#include "tools/report/json_stream.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/support/seeded_random.h"

namespace qzlog_compiler {
namespace {

using Json = nlohmann::json;

std::string written(std::string_view text) {
  std::ostringstream out;
  JsonObjectStream(out).text("", text);
  return out.str().substr(std::string_view("{\"\":").size());
}

/// What another writer of JSON makes of it.
std::string dumped(std::string_view text) { return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace); }

/// Bytes that begin, continue and break characters of every length.
std::string random_text(qz_test::SeededRandom& random) {
  constexpr std::string_view kBytes = "a\"\\\n\x01\x7F\x80\x82\xA0\xBF\xC2\xC3\xE0\xE2\xED\xEF\xF0\xF4\xF8\xFF";
  std::string text;
  for (long long left = random.between(0, 40); left > 0; --left) {
    const bool continues = random.one_in(2);
    text += continues ? '\x82' : kBytes[static_cast<std::size_t>(random.between(0, std::ssize(kBytes) - 1))];
  }
  return text;
}

TEST(JsonObjectStreamText, EveryByte_IsWrittenAsAnotherWriterDoes) {
  for (int first = 0; first < 256; ++first) {
    const std::string one(1, static_cast<char>(first));
    EXPECT_EQ(written(one), dumped(one)) << first;
    for (int second = 0; second < 256; ++second) {
      const std::string two = one + static_cast<char>(second);
      EXPECT_EQ(written(two + "\x80\x80"), dumped(two + "\x80\x80")) << first << ' ' << second;
    }
  }
}

TEST(JsonObjectStreamText, RandomTexts_AreWrittenAsAnotherWriterDoes) {
  EXPECT_EQ(written(""), "\"\"");
  EXPECT_EQ(written("Gr\u00FC\u00DFe an \"\U0001F600\"\n"), "\"Gr\u00FC\u00DFe an \\\"\U0001F600\\\"\\n\"");
  qz_test::SeededRandom random;
  for (int round = 0; round < 20000; ++round) {
    const std::string text = random_text(random);
    ASSERT_EQ(written(text), dumped(text)) << round;
  }
}

TEST(JsonObjectStreamText, LongText_IsWhole) {
  for (const char* const part : {"x", "\xFF", "\x80", "\u20AC", "\xF0\x9F\x98"}) {
    std::string text = "-";
    while (text.size() < 200000) text += part;
    EXPECT_TRUE(written(text) == dumped(text)) << dumped(part);
  }
}

TEST(JsonObjectStream, Members_StandInTheirOrder) {
  std::ostringstream out;
  JsonObjectStream object(out);
  object.number("b", 18446744073709551615U);
  object.signed_number("-", -9223372036854775807 - 1);
  object.text("a", "x\"\xFF");
  object.boolean("yes", true);
  object.boolean("no", false);
  object.null("none");
  object.member("li\"st") << "[1]";
  object.end();
  EXPECT_EQ(out.str(),
            "{\"b\":18446744073709551615,\"-\":-9223372036854775808,\"a\":\"x\\\"\uFFFD\",\"yes\":true,\"no\":false,"
            "\"none\":null,\"li\\\"st\":[1]}");
}

TEST(JsonObjectStream, Layout_StandsAroundTheMembers) {
  std::ostringstream out;
  JsonObjectStream object(out, {", ", "\n  ", "\n", " "});
  object.number("a", 1);
  object.number("b", 2);
  object.end();
  EXPECT_EQ(out.str(), "{\n  \"a\": 1, \n  \"b\": 2\n}");
}

TEST(JsonObjectStream, NoMembers_IsAnEmptyObject) {
  std::ostringstream out;
  JsonObjectStream(out, {",", "\n  ", "\n", " "}).end();
  EXPECT_EQ(out.str(), "{}");
}

TEST(JsonListStream, Items_AreSeparated) {
  std::ostringstream out;
  JsonListStream list(out, {",", "\n  ", "\n"});
  list.item() << 1;
  list.item() << 2;
  list.end();
  EXPECT_EQ(out.str(), "[\n  1,\n  2\n]");
}

TEST(JsonListStream, NoItems_OnlyBrackets) {
  std::ostringstream out;
  JsonListStream(out, {",", "\n  ", "\n"}).end();
  EXPECT_EQ(out.str(), "[]");
}

}  // namespace
}  // namespace qzlog_compiler
