// The library's JSON against another parser's: what is JSON, and what its values are.
#include <gtest/gtest.h>
#include <simdjson.h>

#include <bit>
#include <cmath>
#include <string>
#include <vector>

#include "lines/json_check.h"
#include "lines/json_walk.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"

namespace {

using qzlog::JsonKind;
using qzlog::JsonPlace;
using qzlog::JsonValue;
using simdjson::dom::element;

std::string number_text(double number) { return "float " + std::to_string(std::bit_cast<std::uint64_t>(number)); }

std::string described(element value) {
  std::string text;
  if (value.is_null()) return "null";
  if (value.is_bool()) return value.get_bool().value_unsafe() ? "true" : "false";
  if (value.is_int64()) return std::to_string(value.get_int64().value_unsafe());
  if (value.is_uint64()) return std::to_string(value.get_uint64().value_unsafe()) + " large";
  if (value.is_double()) return number_text(value.get_double().value_unsafe());
  if (value.is_string()) return "'" + std::string(value.get_string().value_unsafe()) + "'";
  if (value.is_array()) {
    const simdjson::dom::array items = value.get_array().value_unsafe();
    for (const element item : items) text += described(item) + ",";
    return "[" + text + "]";
  }
  const simdjson::dom::object fields = value.get_object().value_unsafe();
  for (const auto field : fields) {
    text += std::string(field.key) + ":" + described(field.value) + ",";
  }
  return "{" + text + "}";
}

std::string described(JsonPlace place) {
  std::string storage;
  std::string text;
  const JsonValue value = place.value(storage);
  switch (value.kind) {
    case JsonKind::kNull:
      return "null";
    case JsonKind::kBool:
      return value.truth ? "true" : "false";
    case JsonKind::kInteger:
      return std::to_string(value.integer);
    case JsonKind::kLargeInteger:
      return std::to_string(value.large_integer) + " large";
    case JsonKind::kFloat:
      return number_text(value.number);
    case JsonKind::kText:
      return "'" + std::string(value.text) + "'";
    case JsonKind::kArray:
      place.for_each_element([&text](JsonPlace element) { text += described(element) + ","; });
      return "[" + text + "]";
    case JsonKind::kObject:
      place.for_each_member(storage, [&text](std::string_view key, JsonPlace member) {
        text += std::string(key) + ":" + described(member) + ",";
      });
      return "{" + text + "}";
  }
  return "";
}

class JsonOracle : public ::testing::Test {
 protected:
  void expect_same(const std::string& text) {
    element document;
    const bool is_json = parser_.parse(text).get(document) == simdjson::SUCCESS;
    qzlog::JsonFault fault{};
    ASSERT_EQ(qzlog::check_json(text, fault), is_json) << text << "\n" << (is_json ? fault.reason : "");
    if (is_json) {
      ASSERT_EQ(described(JsonPlace(text)), described(document)) << text;
      ++right_;
    } else {
      ASSERT_LE(fault.place, text.size());
    }
  }

  std::string any_text() {
    static const std::vector<std::string> pieces = {"a",
                                                    "long text of more than sixteen",
                                                    "\\n",
                                                    "\\\"",
                                                    "\\\\",
                                                    "\\/",
                                                    "\\u0041",
                                                    "\\u00e4",
                                                    "\\u65e5",
                                                    "\\ud83d\\ude00",
                                                    "\\u0000",
                                                    "ä",
                                                    "日本",
                                                    "\xF0\x9F\x98\x80",
                                                    "\x7F",
                                                    "{}[]:,",
                                                    "\\ud800",
                                                    "\\udc00",
                                                    "\\ud800\\ud800",
                                                    "\\ud800\\u0041",
                                                    "\\x",
                                                    "\\u12",
                                                    "\t",
                                                    "\xFF",
                                                    "\xED\xA0\x80",
                                                    "\xC0\x80"};
    std::string text;
    for (std::size_t count = random_.below(5); count > 0; --count) {
      text += pieces[random_.below(random_.one_in(10) ? pieces.size() : 16)];
    }
    return "\"" + text + "\"";
  }

  std::string digits() {
    std::string text;
    for (std::size_t count = 1 + random_.below(random_.one_in(10) ? 40 : 6); count > 0; --count) {
      text += static_cast<char>('0' + random_.below(10));
    }
    return text;
  }

  std::string any_number() {
    std::string text = random_.one_in(3) ? "-" : "";
    std::string whole = digits();
    if (!random_.one_in(20)) whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size() - 1));
    text += whole;
    if (random_.one_in(2)) text += "." + (random_.one_in(20) ? std::string() : digits());
    if (random_.one_in(3)) {
      text += std::string(random_.one_in(2) ? "e" : "E") +
              (random_.one_in(3)   ? "-"
               : random_.one_in(2) ? "+"
                                   : "") +
              (random_.one_in(20) ? std::string() : std::to_string(random_.below(400)));
    }
    return text;
  }

  std::string any_value(int depth) {
    static const std::vector<std::string> words = {"true", "false", "null", "tru", "nul",
                                                   "True", "",      "NaN",  "+1",  ".5"};
    const std::size_t kind = random_.below(depth > 0 ? 6 : 4);
    if (kind == 0) return words[random_.below(random_.one_in(15) ? words.size() : 3)];
    if (kind == 1) return any_text();
    if (kind < 4) return any_number();
    std::string text = kind == 4 ? "[" : "{";
    for (std::size_t count = random_.below(4); count > 0; --count) {
      if (kind == 5) text += blank() + any_text() + blank() + ":";
      text += blank() + any_value(depth - 1) + blank() + (count > 1 || random_.one_in(40) ? "," : "");
    }
    return text + (kind == 4 ? "]" : "}");
  }
  std::string blank() { return random_.one_in(6) ? std::string(1, " \t\r\n"[random_.below(4)]) : ""; }

  qz_test::SeededRandom random_;
  simdjson::dom::parser parser_;
  int right_ = 0;
};

TEST_F(JsonOracle, RandomTexts_AreReadAlike) {
  for (int round = 0; round < qz_test::rounds(40000); ++round) {
    ASSERT_NO_FATAL_FAILURE(expect_same(blank() + any_value(4) + blank()));
  }
  EXPECT_GT(right_, qz_test::rounds(10000));
}

TEST_F(JsonOracle, DamagedTexts_AreReadAlike) {
  for (int round = 0; round < qz_test::rounds(2000); ++round) {
    std::string text = any_value(4);
    for (std::size_t count = 1 + random_.below(3); count > 0 && !text.empty(); --count) {
      const std::size_t at = random_.below(text.size());
      if (random_.one_in(3)) {
        text.erase(at, 1 + random_.below(3));
      } else if (random_.one_in(2)) {
        text[at] = static_cast<char>(random_.below(256));
      } else {
        text.insert(at, 1, "\"\\{}[]:,-0.eu"[random_.below(13)]);
      }
      ASSERT_NO_FATAL_FAILURE(expect_same(text));
    }
  }
}

TEST_F(JsonOracle, EveryPrefix_IsReadAlike) {
  const std::string text = R"( {"a":[1,-2.5e+3,true,null,{"b":"x\u00e4\ud83d\ude00ä日"}],"c":false} )";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    ASSERT_NO_FATAL_FAILURE(expect_same(text.substr(0, length)));
  }
}

TEST_F(JsonOracle, LimitsOfNumbers_AreReadAlike) {
  for (const char* const text : {"9223372036854775807",
                                 "9223372036854775808",
                                 "-9223372036854775808",
                                 "-9223372036854775809",
                                 "18446744073709551615",
                                 "18446744073709551616",
                                 "100000000000000000000",
                                 "1.7976931348623157e308",
                                 "1.7976931348623159e308",
                                 "1e309",
                                 "-1e309",
                                 "5e-324",
                                 "2e-324",
                                 "1e-400",
                                 "-1e-400",
                                 "0e999999999999",
                                 "0.0e400",
                                 "0.00000000000000000000000000000000000000000000000000000000000000000001e-300",
                                 "-0",
                                 "-0.0",
                                 "0",
                                 "00",
                                 "-",
                                 "123456789012345678901234567890.5",
                                 "1e99999999999999999999",
                                 "1e-99999999999999999999",
                                 "0.000000000000000000000000000000000000000000000000001e380"}) {
    ASSERT_NO_FATAL_FAILURE(expect_same(text));
    ASSERT_NO_FATAL_FAILURE(expect_same("[" + std::string(text) + "]"));
  }
}

}  // namespace
