#include "lines/plain_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lines/line_fault.h"
#include "lines/line_parser.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"

namespace {

using namespace std::string_literals;

using qzlog::JsonKind;
using qzlog::JsonValue;
using qzlog::LineAttribute;
using qzlog::LineFault;
using qzlog::LineFields;
using qzlog::LineParser;
using qzlog::PlainLineScanner;

std::string described(const JsonValue& value) {
  switch (value.kind) {
    case JsonKind::kText:
      return "'" + std::string(value.text) + "'" + (value.text.data()[value.text.size()] == '\0' ? "" : " open");
    case JsonKind::kBool:
      return value.truth ? "true" : "false";
    case JsonKind::kInteger:
      return std::to_string(value.integer);
    case JsonKind::kLargeInteger:
      return std::to_string(value.large_integer) + " large";
    case JsonKind::kFloat:
      return std::to_string(value.number);
    default:
      return std::string(kind_name(value.kind));
  }
}

std::string described(const LineFields& entry) {
  std::string text = "id " + std::to_string(entry.id) + " '" + std::string(entry.symbolic_id) + "' level " +
                     std::to_string(entry.level) + " time " + (entry.time != nullptr ? entry.time : "none") +
                     (entry.use_default ? " default" : "") + " selector " + std::to_string(entry.selector);
  entry.attributes.for_each([&text](const LineAttribute& attribute) {
    text += " " + std::string(attribute.name) + "=" + described(attribute.value);
  });
  if (entry.has_seq) text += " seq " + std::to_string(entry.seq);
  for (const std::string_view word : {entry.writer, entry.written, entry.definitions, entry.name}) {
    if (!word.empty()) text += " [" + std::string(word) + "]";
  }
  return text;
}

/// "other" for a line that is not plain.
std::string scanned(PlainLineScanner& scanner, const std::string& line) {
  LineFields entry;
  return scanner.scan(line, entry) ? described(entry) : "other";
}

struct PlainLine {
  const char* line;
  const char* meaning;
};

TEST(PlainEntry, PlainLines_AreRead) {
  constexpr PlainLine kLines[] = {
      {R"({"id":1})", "id 1 '' level 0 time none selector 0"},
      {R"({"id":4294967295,"level":9})", "id 4294967295 '' level 9 time none selector 0"},
      {R"({"id":"DISK_FULL"})", "id 0 'DISK_FULL' level 0 time none selector 0"},
      {R"({"time":"2026-11-21T08:15:30Z","id":0})", "id 0 '' level 0 time 2026-11-21T08:15:30Z selector 0"},
      {R"({"id":1,"default":true,"selector":4294967295})", "id 1 '' level 0 time none default selector 4294967295"},
      {R"({"id":1,"default":false})", "id 1 '' level 0 time none selector 0"},
      {R"({"id":1,"attributes":{}})", "id 1 '' level 0 time none selector 0"},
      {R"({"id":1,"attributes":{"A":"x","":"","B":true,"C":false}})",
       "id 1 '' level 0 time none selector 0 A='x' ='' B=true C=false"},
      {R"({"id":1,"attributes":{"A":0,"A":-1,"B":999999999999999999,"C":-999999999999999999}})",
       "id 1 '' level 0 time none selector 0 A=0 A=-1 B=999999999999999999 C=-999999999999999999"},
      {R"({"id":1,"attributes":{"A":12345678,"B":123456789,"C":1234567,"D":10000000}})",
       "id 1 '' level 0 time none selector 0 A=12345678 B=123456789 C=1234567 D=10000000"},
      {R"({"id":1,"attributes":{"A":"{[:,]}'/","B":"Käse 日本"}})",
       "id 1 '' level 0 time none selector 0 A='{[:,]}'/' B='Käse 日本'"},
      {R"(  { "id" : 1 , "attributes" : { "A" : 5 , "B" : "x" , "C" : true } , "level" : 3 }  )",
       "id 1 '' level 3 time none selector 0 A=5 B='x' C=true"},
      {R"({"writer":"host/12/34","seq":5,"written":"2026-11-21T08:15:30.5Z","definitions":"0123456789abcdef","id":1,"name":"X"})",
       "id 1 '' level 0 time none selector 0 seq 5 [host/12/34] [2026-11-21T08:15:30.5Z] [0123456789abcdef] [X]"},
      {R"({"id":1,"attributes":{"A":1.5,"B":-0.25,"C":1e3,"D":-0.0}})",
       "id 1 '' level 0 time none selector 0 A=1.500000 B=-0.250000 C=1000.000000 D=-0.000000"},
      {R"({"id":1,"attributes":{"\u0041":"a\n\"\\\/\u00e4\ud83d\ude00z","B":"\\"}})",
       "id 1 '' level 0 time none selector 0 A='a\n\"\\/\u00e4\U0001F600z' B='\\'"},
      {"{\"id\":1}\r", "id 1 '' level 0 time none selector 0"},
      {"{\"id\":1,\"attributes\":{\"A\":\"\x7F\"}}", "id 1 '' level 0 time none selector 0 A='\x7F'"},
  };
  PlainLineScanner scanner;
  for (const PlainLine& row : kLines) EXPECT_EQ(scanned(scanner, row.line), row.meaning) << row.line;
}

TEST(PlainEntry, OtherLines_AreLeftToTheGeneralParser) {
  const std::string lines[] = {
      "",
      " ",
      "{}",
      "[1]",
      "1",
      "{",
      "{\"id\":1",
      "{\"id\":1}}",
      "{\"id\":1} x",
      "{\"id\":1}{\"id\":2}",
      "{\"id\":1,}",
      "{,\"id\":1}",
      "{\"id\" 1}",
      "{\"id\":}",
      "{\"id\":\"}",
      "{\"id\":1\"}",
      "{id:1}",
      "{'id':1}",
      "{\"level\":3}",
      "{\"id\":1,\"id\":1}",
      "{\"id\":1,\"other\":1}",
      "{\"id\":1,\"ids\":1}",
      "{\"i\":1}",
      "{\"id\":-1}",
      "{\"id\":4294967296}",
      "{\"id\":\"\"}",
      "{\"id\":true}",
      "{\"id\":01}",
      "{\"id\":+1}",
      "{\"id\":-}",
      "{\"id\":-0}",
      "{\"id\":1.0}",
      "{\"id\":1e0}",
      "{\"id\":1,\"seq\":-1}",
      "{\"id\":1,\"writer\":\"host\"}",
      "{\"id\":1,\"written\":\"now\"}",
      "{\"id\":1,\"definitions\":\"x\"}",
      "{\"id\":1,\"name\":\"\"}",
      "{\"id\":1,\"bytes\":{}}",
      "{\"id\":1x}",
      "{\"id\":1 2}",
      "{\"id\":00000000}",
      "{\"id\":1,\"level\":10}",
      "{\"id\":1,\"level\":\"3\"}",
      "{\"id\":1,\"time\":5}",
      "{\"id\":1,\"time\":null}",
      "{\"id\":1,\"default\":1}",
      "{\"id\":1,\"default\":tru}",
      "{\"id\":1,\"default\":falsey}",
      "{\"id\":1,\"selector\":-1}",
      "{\"id\":1,\"attributes\":[]}",
      "{\"id\":1,\"attributes\":{\"A\":1000000000000000000}}",
      "{\"id\":1,\"attributes\":{\"A\":18446744073709551616}}",
      "{\"id\":1,\"attributes\":{\"A\":1.}}",
      "{\"id\":1,\"attributes\":{\"A\":.5}}",
      "{\"id\":1,\"attributes\":{\"A\":01.5}}",
      "{\"id\":1,\"attributes\":{\"A\":1e400}}",
      "{\"id\":1,\"attributes\":{\"A\":null}}",
      "{\"id\":1,\"attributes\":{\"A\":[]}}",
      "{\"id\":1,\"attributes\":{\"A\":{}}}",
      "{\"id\":1,\"attributes\":{\"A\":t}}",
      "{\"id\":1,\"attributes\":{\"A\":1,}}",
      "{\"id\":1,\"attributes\":{\"A\":1}",
      "{\"id\":1,\"attributes\":{\"A\":\"\\x\"}}",
      "{\"id\":1,\"attributes\":{\"A\":\"\\u0000\"}}",
      "{\"id\":1,\"attributes\":{\"A\":\"\\ud800\"}}",
      "{\"id\":1,\"attributes\":{\"A\":\"\\\"}}",
      "{\\\"id\":1}",
      "{\"id\":1,\"attributes\":{\"A\":\"tab\there\"}}",
      "{\"id\":1,\t\"level\":3}",
      "{\"id\":1}\r\r",
      "{\"id\":1,\"attributes\":{\"A\":\"\xC3\x28\"}}",
      "{\"id\":1,\"attributes\":{\"A\":\"\xED\xA0\x80\"}}",
      "{\"id\":1}\0"s,
      "{\"id\":1,\"attributes\":{\"A\":\"\0\"}}"s,
      "\xEF\xBB\xBF{\"id\":1}",
  };
  PlainLineScanner scanner;
  for (const std::string& line : lines) EXPECT_EQ(scanned(scanner, line), "other") << line;
}

TEST(PlainEntry, LongestLine_IsPlainAndOneByteMoreIsNot) {
  PlainLineScanner scanner;
  const std::string begin = R"({"id":1,"attributes":{"A":")";
  const std::string end = "\"}}";
  const std::string text(PlainLineScanner::kMaximumBytes - begin.size() - end.size(), 'x');
  std::string line = begin;
  line.append(text).append(end);
  EXPECT_EQ(scanned(scanner, line), "id 1 '' level 0 time none selector 0 A='" + text + "'");
  line.insert(begin.size(), 1, 'x');
  EXPECT_EQ(scanned(scanner, line), "other");
}

TEST(PlainEntry, LineIsNotChanged) {
  PlainLineScanner scanner;
  const std::string line = R"({"id":1,"attributes":{"A":"x"}})";
  std::string scanned_line = line;
  LineFields entry;
  ASSERT_TRUE(scanner.scan(scanned_line, entry));
  EXPECT_EQ(scanned_line, line);
}

// ---- the general parser as the oracle ----

std::string places(const LineFields& entry) {
  std::string text = " at " + std::to_string(entry.id_place) + " " + std::to_string(entry.time_place);
  entry.attributes.for_each([&text](const LineAttribute& attribute) { text += " " + std::to_string(attribute.place); });
  return text;
}

template <class Parse>
std::string outcome(Parse&& parse) {
  try {
    LineFields fields;
    parse(fields);
    return described(fields) + places(fields);
  } catch (const LineFault& error) {
    return rule_name(error.rule) + (": " + error.text) + " at " + std::to_string(error.place);
  }
}

class PlainEntryOracle : public ::testing::Test {
 protected:
  std::size_t below(std::size_t count) { return random_.below(count); }

  void expect_same(const std::string& line) {
    const std::string expected = outcome([&](LineFields& fields) { general_.parse_any(line, fields); });
    ASSERT_EQ(outcome([&](LineFields& fields) { parser_.parse(line, fields); }), expected) << line;
  }

  std::string blanks() { return below(8) == 0 ? std::string(below(3), " \t\r"[below(3)]) : ""; }

  std::string any_text() {
    static const std::vector<std::string> pieces = {
        "a",    "B",       "",     "Käse", "日本", "\\n",  "\\u0041", "\\u0000", " ",    "/", "{", ":",
        "\\\"", "\\ud800", "\xFF", "\t",   "\\x",  "long", "xy",      "P1",      "\x7F", "1", ",", "}"};
    std::string text;
    const std::size_t length = below(10) == 0 ? below(120) : below(6);
    for (std::size_t count = 0; count < length; ++count) text += pieces[below(below(4) == 0 ? pieces.size() : 4)];
    return "\"" + text + "\"";
  }

  std::string any_value() {
    static const std::vector<std::string> values = {"0",
                                                    "1",
                                                    "-1",
                                                    "12345678",
                                                    "123456789012345678",
                                                    "9223372036854775807",
                                                    "9223372036854775808",
                                                    "-9223372036854775808",
                                                    "18446744073709551615",
                                                    "18446744073709551616",
                                                    "1.5",
                                                    "-0.5",
                                                    "1.",
                                                    "1.e5",
                                                    "0.1e-7",
                                                    "1E+400",
                                                    "1e-400",
                                                    "-0.0",
                                                    "1.5.5",
                                                    "1e5e5",
                                                    "2.5-",
                                                    "1e3",
                                                    "-0",
                                                    "007",
                                                    "true",
                                                    "false",
                                                    "null",
                                                    "[]",
                                                    "{}",
                                                    "{\"a\":1}",
                                                    "tru",
                                                    "-",
                                                    "4294967295",
                                                    "4294967296",
                                                    "9",
                                                    "10"};
    return below(3) == 0 ? any_text() : below(2) == 0 ? std::to_string(below(100000)) : values[below(values.size())];
  }

  std::string any_attributes() {
    std::string text = "{" + blanks();
    for (std::size_t count = below(5); count > 0; --count) {
      text += any_text() + blanks() + ":" + blanks() + any_value() + blanks() + (count > 1 ? "," : "") + blanks();
    }
    return text + "}";
  }

  std::string any_field() {
    static const std::vector<std::string> keys = {"id",       "level", "time",   "attributes", "default",
                                                  "selector", "seq",   "writer", "written",    "definitions",
                                                  "name",     "bytes", "lost",   "held",       "other"};
    static const std::vector<std::string> forms = {"\"host/12/34\"",
                                                   "\"a/b/12/x\"",
                                                   "\"2026-11-21T08:15:30.123456789Z\"",
                                                   "\"0123456789abcdef\"",
                                                   "\"0123456789abcdef+0123456789abcdef\"",
                                                   "\"DISK_FULL\""};
    const std::size_t key = below(keys.size());
    const std::string value = key == 3        ? any_attributes()
                              : below(3) == 0 ? any_value()
                              : below(2) == 0 ? forms[below(forms.size())]
                                              : std::to_string(below(12));
    return "\"" + keys[key] + "\"" + blanks() + ":" + blanks() + value;
  }

  std::string any_line() {
    std::string line =
        blanks() + "{" + blanks() + (below(4) == 0 ? any_field() : "\"id\":" + std::to_string(below(5000)));
    for (std::size_t count = below(5); count > 0; --count) line += blanks() + "," + blanks() + any_field();
    return line + blanks() + "}" + blanks();
  }

  qz_test::SeededRandom random_;
  LineParser parser_;
  LineParser general_;
};

TEST_F(PlainEntryOracle, RandomLines_AsTheGeneralParser) {
  PlainLineScanner scanner;
  std::size_t plain = 0;
  for (int round = 0; round < qz_test::rounds(30000); ++round) {
    const std::string line = any_line();
    ASSERT_NO_FATAL_FAILURE(expect_same(line));
    plain += scanned(scanner, line) == "other" ? 0 : 1;
  }
  EXPECT_GT(plain, static_cast<std::size_t>(qz_test::rounds(500)));
}

TEST_F(PlainEntryOracle, DamagedLines_AsTheGeneralParser) {
  constexpr unsigned kByteStep = 256 / qz_test::rounds(256);
  const std::string line =
      R"({"id":1001,"level":3,"time":"2026-11-21T08:15:30Z","attributes":{"Name":"vol1","Free":-12345678,"On":true},"default":false})";
  for (std::size_t at = 0; at <= line.size(); ++at) {
    ASSERT_NO_FATAL_FAILURE(expect_same(line.substr(0, at)));
    ASSERT_NO_FATAL_FAILURE(expect_same(line.substr(at)));
    for (unsigned byte = 0; byte < 256; byte += kByteStep) {
      std::string damaged = line;
      if (at < line.size()) damaged[at] = static_cast<char>(byte);
      ASSERT_NO_FATAL_FAILURE(expect_same(damaged));
      damaged = line;
      damaged.insert(at, 1, static_cast<char>(byte));
      ASSERT_NO_FATAL_FAILURE(expect_same(damaged));
    }
  }
}

TEST_F(PlainEntryOracle, TextsOfEveryLength_AsTheGeneralParser) {
  for (std::size_t length = 0; length < 200; ++length) {
    const std::string text(length, 'x');
    ASSERT_NO_FATAL_FAILURE(expect_same("{\"id\":1,\"attributes\":{\"" + text + "\":\"" + text + "\",\"B\":12}}"));
  }
}

TEST_F(PlainEntryOracle, NumbersOfEveryLength_AsTheGeneralParser) {
  for (std::size_t length = 1; length < 25; ++length) {
    for (const char digit : {'0', '1', '9'}) {
      for (const char* sign : {"", "-"}) {
        const std::string number = sign + std::string(length, digit);
        ASSERT_NO_FATAL_FAILURE(expect_same("{\"id\":1,\"attributes\":{\"A\":" + number + "}}"));
        ASSERT_NO_FATAL_FAILURE(expect_same("{\"id\":" + number + "}"));
      }
    }
  }
}

}  // namespace
