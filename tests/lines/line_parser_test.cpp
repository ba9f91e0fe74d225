#include "lines/line_parser.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "lines/line_fault.h"

namespace {

using qzlog::LineAttribute;
using qzlog::LineAttributes;
using qzlog::LineFault;
using qzlog::LineFields;
using qzlog::LineParser;
using qzlog::LineRule;

std::size_t number_of(const LineAttributes& attributes) {
  std::size_t count = 0;
  attributes.for_each([&count](const LineAttribute&) { ++count; });
  return count;
}

class LineParserTest : public ::testing::Test {
 protected:
  LineFields parse(const std::string& line) {
    line_ = line;
    LineFields fields;
    parser_.parse(line_, fields);
    return fields;
  }

  std::string line_;
  LineParser parser_;
};

TEST_F(LineParserTest, OnlyId_LeavesTheRestAtItsDefaults) {
  const LineFields entry = parse(R"({"id":1001})");
  EXPECT_EQ(entry.id, 1001u);
  EXPECT_EQ(entry.symbolic_id, "");
  EXPECT_EQ(entry.level, 0u);
  EXPECT_EQ(entry.time, nullptr);
  EXPECT_FALSE(entry.use_default);
  EXPECT_EQ(entry.selector, 0u);
  EXPECT_EQ(number_of(entry.attributes), 0u);
}

TEST_F(LineParserTest, EveryKey_IsRead) {
  const LineFields entry = parse(
      R"({"selector":7,"default":true,"attributes":{"A":1},"time":"2026-11-21T08:15:30Z","level":9,"id":"DISK_FULL"})");
  EXPECT_EQ(entry.symbolic_id, "DISK_FULL");
  EXPECT_EQ(entry.level, 9u);
  EXPECT_STREQ(entry.time, "2026-11-21T08:15:30Z");
  EXPECT_TRUE(entry.use_default);
  EXPECT_EQ(entry.selector, 7u);
  EXPECT_EQ(number_of(entry.attributes), 1u);
}

TEST_F(LineParserTest, LargestId_IsRead) { EXPECT_EQ(parse(R"({"id":4294967295})").id, 4294967295u); }

TEST_F(LineParserTest, EscapedKey_IsTheKey) { EXPECT_EQ(parse(R"({"\u0069d":5})").id, 5u); }

TEST_F(LineParserTest, SecondLine_ForgetsTheFirst) {
  parse(R"({"id":1,"level":3,"default":true,"attributes":{}})");
  const LineFields entry = parse(R"({"id":2})");
  EXPECT_EQ(entry.id, 2u);
  EXPECT_EQ(entry.level, 0u);
  EXPECT_FALSE(entry.use_default);
  EXPECT_EQ(number_of(entry.attributes), 0u);
}

struct BadLine {
  const char* name;
  const char* line;
  LineRule rule;
  const char* text;
};

void PrintTo(const BadLine& line, std::ostream* out) { *out << line.name; }

constexpr const char* kIdText = "'id' has to be an integer from 0 to 4294967295 or an entry's name";
constexpr const char* kLevelText = "'level' has to be an integer from 0 to 9";

const BadLine kBadLines[] = {
    {"Array", "[1]", LineRule::kNotAnObject, "an entry is an object in braces, not an array"},
    {"Number", "1001", LineRule::kNotAnObject, "an entry is an object in braces, not an integer"},
    {"Null", "null", LineRule::kNotAnObject, "an entry is an object in braces, not null"},
    {"NoId", R"({"level":3})", LineRule::kMissingId, "the entry has no 'id'"},
    {"EmptyObject", "{}", LineRule::kMissingId, "the entry has no 'id'"},
    {"NegativeId", R"({"id":-1})", LineRule::kBadId, kIdText},
    {"LargeId", R"({"id":4294967296})", LineRule::kBadId, kIdText},
    {"FloatId", R"({"id":1.0})", LineRule::kBadId, kIdText},
    {"BoolId", R"({"id":true})", LineRule::kBadId, kIdText},
    {"EmptyName", R"({"id":""})", LineRule::kBadId, "'id' is an empty text"},
    {"Level10", R"({"id":1,"level":10})", LineRule::kBadLevel, kLevelText},
    {"NegativeLevel", R"({"id":1,"level":-1})", LineRule::kBadLevel, kLevelText},
    {"TextLevel", R"({"id":1,"level":"3"})", LineRule::kBadLevel, kLevelText},
    {"NumberTime", R"({"id":1,"time":5})", LineRule::kBadTime,
     "'time' has to be a text such as \"2026-11-21T08:15:30Z\", not an integer"},
    {"NullTime", R"({"id":1,"time":null})", LineRule::kBadTime,
     "'time' has to be a text such as \"2026-11-21T08:15:30Z\", not null"},
    {"NulInTime", R"({"id":1,"time":"2026\u0000"})", LineRule::kNulCharacter,
     "the text '2026\\u0000' holds U+0000, which no text can"},
    {"ListAttributes", R"({"id":1,"attributes":[]})", LineRule::kBadAttributes,
     "'attributes' has to be an object, not an array"},
    {"NumberDefault", R"({"id":1,"default":1})", LineRule::kBadChoice,
     "'default' has to be true or false, not an integer"},
    {"TextSelector", R"({"id":1,"selector":"1"})", LineRule::kBadChoice,
     "'selector' has to be an integer from 0 to 4294967295"},
    {"NegativeSelector", R"({"id":1,"selector":-1})", LineRule::kBadChoice,
     "'selector' has to be an integer from 0 to 4294967295"},
    {"UnknownKey", R"({"id":1,"levle":3})", LineRule::kUnknownKey,
     "unknown key 'levle'; an entry has 'id', 'level', 'time', 'attributes', 'default' and 'selector'"},
    {"DuplicateKey", R"({"id":1,"level":3,"id":2})", LineRule::kDuplicateKey, "the key 'id' is given twice"},
    {"DuplicateEscapedKey", R"({"id":1,"\u0069d":2})", LineRule::kDuplicateKey, "the key 'id' is given twice"},
};

class LineParserBadLine : public ::testing::TestWithParam<BadLine> {};

TEST_P(LineParserBadLine, Parse_ThrowsRuleAndText) {
  LineParser parser;
  LineFields fields;
  try {
    parser.parse(GetParam().line, fields);
    FAIL() << "no exception";
  } catch (const LineFault& error) {
    EXPECT_EQ(error.text, GetParam().text);
    EXPECT_STREQ(rule_name(error.rule), rule_name(GetParam().rule));
  }
}

INSTANTIATE_TEST_SUITE_P(Table, LineParserBadLine, ::testing::ValuesIn(kBadLines),
                         [](const auto& parameter) { return parameter.param.name; });

constexpr const char* kNoJson[] = {
    "{",
    "}",
    R"({"id":1)",
    R"({"id":1}})",
    R"({"id":1} x)",
    R"({"id":1}{"id":2})",
    R"({"id":1,})",
    R"({"id":01})",
    R"({"id":+1})",
    R"({"id" 1})",
    R"({id:1})",
    R"({'id':1})",
    R"({"id":1,"attributes":{"A":NaN}})",
    R"({"id":1,"attributes":{"A":1e999}})",
    R"({"id":1,"attributes":{"A":18446744073709551616}})",
    R"({"id":1,"attributes":{"A":"\ud800"}})",
    R"({"id":1,"attributes":{"A":"\x41"}})",
    "{\"id\":1,\"attributes\":{\"A\":\"tab\there\"}}",
    "{\"id\":1,\"attributes\":{\"A\":\"\xC3\x28\"}}",
    "{\"id\":1,\"attributes\":{\"A\":\"\xC0\x80\"}}",
    "{\"id\":1,\"attributes\":{\"A\":\"\xED\xA0\x80\"}}",
};

TEST_F(LineParserTest, NotJson_ThrowsBadJson) {
  for (const char* const line : kNoJson) {
    try {
      parse(line);
      ADD_FAILURE() << "no exception: " << line;
    } catch (const LineFault& error) {
      EXPECT_STREQ(rule_name(error.rule), rule_name(LineRule::kBadJson)) << line;
      EXPECT_TRUE(error.text.starts_with("not valid JSON: ")) << error.text;
    }
  }
}

TEST_F(LineParserTest, EveryPrefixOfALine_IsRefused) {
  const std::string line =
      R"({"id":1001,"level":3,"time":"2026-11-21T08:15:30Z","attributes":{"N":"vol\u00e4","F":-1.5e3}})";
  for (std::size_t length = 0; length < line.size(); ++length) {
    EXPECT_THROW(parse(line.substr(0, length)), LineFault) << line.substr(0, length);
  }
  EXPECT_EQ(parse(line).id, 1001u);
}

}  // namespace
