#include "tools/report/json_stream.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/support/seeded_random.h"

namespace qzlog_compiler {
namespace {

using Json = nlohmann::json;

std::string written(std::string_view text, std::size_t piece_size_bytes) {
  std::ostringstream out;
  write_json_text(text, out, piece_size_bytes);
  return out.str();
}

std::string in_one_piece(std::string_view text) {
  return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

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

TEST(WriteJsonText, Pieces_ReadLikeTheWhole) {
  EXPECT_EQ(written("", 4), "\"\"");
  EXPECT_EQ(written("Gr\u00FC\u00DFe an \"\U0001F600\"\n", 4), "\"Gr\u00FC\u00DFe an \\\"\U0001F600\\\"\\n\"");
  qz_test::SeededRandom random;
  for (int round = 0; round < 20000; ++round) {
    const std::string text = random_text(random);
    const auto piece = static_cast<std::size_t>(random.between(4, 12));
    ASSERT_EQ(written(text, piece), in_one_piece(text)) << round;
  }
}

TEST(WriteJsonText, LongText_IsWhole) {
  for (const char* const part : {"x", "\xFF", "\x80", "\u20AC", "\xF0\x9F\x98"}) {
    std::string text = "-";
    while (text.size() < 200000) text += part;
    std::ostringstream out;
    write_json_text(text, out);
    EXPECT_TRUE(out.str() == in_one_piece(text)) << in_one_piece(part);
  }
}

TEST(JsonObjectStream, Members_StandInTheirOrder) {
  std::ostringstream out;
  JsonObjectStream object(out);
  object.number("b", 18446744073709551615U);
  object.text("a", "x\"\xFF");
  object.hexadecimal("none", "");
  object.member("list") << "[1]";
  object.end();
  EXPECT_EQ(out.str(), "{\"b\":18446744073709551615,\"a\":\"x\\\"\uFFFD\",\"none\":\"\",\"list\":[1]}");
}

TEST(JsonObjectStream, NoMembers_IsAnEmptyObject) {
  std::ostringstream out;
  JsonObjectStream(out).end();
  EXPECT_EQ(out.str(), "{}");
}

TEST(JsonObjectStream, ManyBytes_AllInHexadecimal) {
  std::string expected = "{\"bytes\":\"";
  for (int i = 0; i < 100001; ++i) expected += "0A";
  std::ostringstream out;
  JsonObjectStream object(out);
  object.hexadecimal("bytes", std::string(100001, '\n'));
  object.end();
  EXPECT_TRUE(out.str() == expected + "\"}");
}

TEST(JsonListStream, Items_AreSeparated) {
  std::ostringstream out;
  JsonListStream list(out, "\n  ");
  list.item() << 1;
  list.item() << 2;
  list.end("\n");
  EXPECT_EQ(out.str(), "[\n  1,\n  2\n]");
}

TEST(JsonListStream, NoItems_OnlyBrackets) {
  std::ostringstream out;
  JsonListStream(out, "\n  ").end("\n");
  EXPECT_EQ(out.str(), "[]");
}

}  // namespace
}  // namespace qzlog_compiler
