#include "tools/render/json_entry.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tools/render/entry_error.h"

namespace {

using qzlog_tool::EntryError;
using qzlog_tool::EntryRule;
using qzlog_tool::JsonEntry;
using qzlog_tool::JsonEntryParser;

class JsonEntryTest : public ::testing::Test {
 protected:
  JsonEntry parse(const std::string& line) {
    padded_ = line + std::string(simdjson::SIMDJSON_PADDING, ' ');
    return parser_.parse(std::string_view(padded_).substr(0, line.size()));
  }

  std::string padded_;
  JsonEntryParser parser_;
};

TEST_F(JsonEntryTest, OnlyId_LeavesTheRestAtItsDefaults) {
  const JsonEntry entry = parse(R"({"id":1001})");
  EXPECT_EQ(entry.id, 1001u);
  EXPECT_EQ(entry.name, "");
  EXPECT_EQ(entry.level, 0u);
  EXPECT_EQ(entry.time, nullptr);
  EXPECT_FALSE(entry.use_default);
  EXPECT_EQ(entry.selector, 0u);
  EXPECT_EQ(entry.attributes.size(), 0u);
}

TEST_F(JsonEntryTest, EveryKey_IsRead) {
  const JsonEntry entry = parse(
      R"({"selector":7,"default":true,"attributes":{"A":1},"time":"2026-11-21T08:15:30Z","level":9,"id":"DISK_FULL"})");
  EXPECT_EQ(entry.name, "DISK_FULL");
  EXPECT_EQ(entry.level, 9u);
  EXPECT_STREQ(entry.time, "2026-11-21T08:15:30Z");
  EXPECT_TRUE(entry.use_default);
  EXPECT_EQ(entry.selector, 7u);
  EXPECT_EQ(entry.attributes.size(), 1u);
}

TEST_F(JsonEntryTest, LargestId_IsRead) { EXPECT_EQ(parse(R"({"id":4294967295})").id, 4294967295u); }

TEST_F(JsonEntryTest, EscapedKey_IsTheKey) { EXPECT_EQ(parse(R"({"\u0069d":5})").id, 5u); }

TEST_F(JsonEntryTest, SecondLine_ForgetsTheFirst) {
  parse(R"({"id":1,"level":3,"default":true,"attributes":{}})");
  const JsonEntry entry = parse(R"({"id":2})");
  EXPECT_EQ(entry.id, 2u);
  EXPECT_EQ(entry.level, 0u);
  EXPECT_FALSE(entry.use_default);
  EXPECT_EQ(entry.attributes.size(), 0u);
}

struct BadLine {
  const char* name;
  const char* line;
  EntryRule rule;
  const char* text;
};

void PrintTo(const BadLine& line, std::ostream* out) { *out << line.name; }

constexpr const char* kIdText = "'id' has to be an integer from 0 to 4294967295 or an entry's name";
constexpr const char* kLevelText = "'level' has to be an integer from 0 to 9";

const BadLine kBadLines[] = {
    {"Array", "[1]", EntryRule::kNotAnObject, "an entry is an object in braces, not an array"},
    {"Number", "1001", EntryRule::kNotAnObject, "an entry is an object in braces, not an integer"},
    {"Null", "null", EntryRule::kNotAnObject, "an entry is an object in braces, not null"},
    {"NoId", R"({"level":3})", EntryRule::kMissingId, "the entry has no 'id'"},
    {"EmptyObject", "{}", EntryRule::kMissingId, "the entry has no 'id'"},
    {"NegativeId", R"({"id":-1})", EntryRule::kBadId, kIdText},
    {"LargeId", R"({"id":4294967296})", EntryRule::kBadId, kIdText},
    {"FloatId", R"({"id":1.0})", EntryRule::kBadId, kIdText},
    {"BoolId", R"({"id":true})", EntryRule::kBadId, kIdText},
    {"EmptyName", R"({"id":""})", EntryRule::kBadId, "'id' is an empty text"},
    {"Level10", R"({"id":1,"level":10})", EntryRule::kBadLevel, kLevelText},
    {"NegativeLevel", R"({"id":1,"level":-1})", EntryRule::kBadLevel, kLevelText},
    {"TextLevel", R"({"id":1,"level":"3"})", EntryRule::kBadLevel, kLevelText},
    {"NumberTime", R"({"id":1,"time":5})", EntryRule::kBadTime,
     "'time' has to be a text such as \"2026-11-21T08:15:30Z\", not an integer"},
    {"NullTime", R"({"id":1,"time":null})", EntryRule::kBadTime,
     "'time' has to be a text such as \"2026-11-21T08:15:30Z\", not null"},
    {"NulInTime", R"({"id":1,"time":"2026\u0000"})", EntryRule::kNulCharacter,
     "the text '2026\\u0000' holds U+0000, which no text can"},
    {"ListAttributes", R"({"id":1,"attributes":[]})", EntryRule::kBadAttributes,
     "'attributes' has to be an object, not an array"},
    {"NumberDefault", R"({"id":1,"default":1})", EntryRule::kBadChoice,
     "'default' has to be true or false, not an integer"},
    {"TextSelector", R"({"id":1,"selector":"1"})", EntryRule::kBadChoice,
     "'selector' has to be an integer from 0 to 4294967295"},
    {"NegativeSelector", R"({"id":1,"selector":-1})", EntryRule::kBadChoice,
     "'selector' has to be an integer from 0 to 4294967295"},
    {"UnknownKey", R"({"id":1,"levle":3})", EntryRule::kUnknownKey,
     "unknown key 'levle'; an entry has 'id', 'level', 'time', 'attributes', 'default' and 'selector'"},
    {"DuplicateKey", R"({"id":1,"level":3,"id":2})", EntryRule::kDuplicateKey, "the key 'id' is given twice"},
    {"DuplicateEscapedKey", R"({"id":1,"\u0069d":2})", EntryRule::kDuplicateKey, "the key 'id' is given twice"},
};

class JsonEntryBadLine : public ::testing::TestWithParam<BadLine> {};

TEST_P(JsonEntryBadLine, Parse_ThrowsRuleAndText) {
  const std::string line = GetParam().line;
  const std::string padded = line + std::string(simdjson::SIMDJSON_PADDING, ' ');
  JsonEntryParser parser;
  try {
    parser.parse(std::string_view(padded).substr(0, line.size()));
    FAIL() << "no exception";
  } catch (const EntryError& error) {
    EXPECT_EQ(error.text, GetParam().text);
    EXPECT_EQ(rule_info(error.rule).name, rule_info(GetParam().rule).name);
  }
}

INSTANTIATE_TEST_SUITE_P(Table, JsonEntryBadLine, ::testing::ValuesIn(kBadLines),
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

TEST_F(JsonEntryTest, NotJson_ThrowsBadJson) {
  for (const char* const line : kNoJson) {
    try {
      parse(line);
      ADD_FAILURE() << "no exception: " << line;
    } catch (const EntryError& error) {
      EXPECT_EQ(error.rule, EntryRule::kBadJson) << line;
      EXPECT_TRUE(error.text.starts_with("not valid JSON: ")) << error.text;
    }
  }
}

TEST_F(JsonEntryTest, EveryPrefixOfALine_IsRefused) {
  const std::string line =
      R"({"id":1001,"level":3,"time":"2026-11-21T08:15:30Z","attributes":{"N":"vol\u00e4","F":-1.5e3}})";
  for (std::size_t length = 0; length < line.size(); ++length) {
    EXPECT_THROW(parse(line.substr(0, length)), EntryError) << line.substr(0, length);
  }
  EXPECT_EQ(parse(line).id, 1001u);
}

}  // namespace
