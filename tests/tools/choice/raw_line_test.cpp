#include "tools/choice/raw_line.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace {

using qzlog_tool::RawKey;
using qzlog_tool::RawLine;
using qzlog_tool::RawValue;

const std::string kWhole =
    R"({"writer":"h/1/2","seq":18,"written":"2026-11-21T08:15:30.000000001Z","definitions":"0123456789abcdef","id":7,)"
    R"("level":3,"time":"2026-11-21T08:15:30Z","default":true,"selector":4,"name":"N","attributes":{"A":-12,"B":"x","C":true}})";

RawValue found(const std::string& line, const std::string& name) { return RawLine(line).find(RawKey(name)); }

TEST(RawLine, WholeLine_SaysEverything) {
  const RawLine line(kWhole);
  EXPECT_EQ(line.writer(), "h/1/2");
  EXPECT_EQ(line.seq(), 18u);
  EXPECT_EQ(line.id(), 7u);
  EXPECT_EQ(line.level(), 3u);
  EXPECT_EQ(line.time(), "2026-11-21T08:15:30Z");
  EXPECT_TRUE(line.has_writer() && line.has_seq() && line.has_id() && line.has_level());
  EXPECT_EQ(found(kWhole, "A").integer, -12);
  EXPECT_EQ(found(kWhole, "B").text, "x");
  EXPECT_TRUE(found(kWhole, "C").truth);
  EXPECT_EQ(found(kWhole, "x").kind, RawValue::Kind::kAbsent);
  EXPECT_EQ(found(kWhole, "D").kind, RawValue::Kind::kAbsent);
}

TEST(RawLine, EveryBeginningOfALine_SaysNoMoreThanTheWhole) {
  for (std::size_t size = 0; size < kWhole.size(); ++size) {
    const RawLine line(std::string_view(kWhole).substr(0, size));
    EXPECT_TRUE(!line.has_id() || line.id() == 7) << size;
    EXPECT_TRUE(!line.has_seq() || line.seq() == 18) << size;
    EXPECT_TRUE(!line.has_level() || line.level() == 3) << size;
    EXPECT_TRUE(!line.has_writer() || line.writer() == "h/1/2") << size;
    EXPECT_TRUE(line.time().empty() || line.time() == "2026-11-21T08:15:30Z") << size;
  }
}

// It may stand elsewhere.
TEST(RawLine, LineWithoutItsLevelInItsPlace_SaysEverythingElse) {
  const std::string line = R"({"id":7,"time":"2026-11-21T08:15:30Z","attributes":{"A":-12},"level":5})";
  EXPECT_FALSE(RawLine(line).has_level());
  EXPECT_EQ(RawLine(line).id(), 7u);
  EXPECT_EQ(RawLine(line).time(), "2026-11-21T08:15:30Z");
  EXPECT_EQ(found(line, "A").integer, -12);
}

TEST(RawLine, WhatIsWrittenOtherwise_IsNotSaid) {
  EXPECT_FALSE(RawLine(R"({ "id":7,"level":3})").has_id());
  EXPECT_FALSE(RawLine(R"({"id":"SEVEN","level":3})").has_id());
  EXPECT_FALSE(RawLine(R"({"id":7.0,"level":3,"attributes":{}})").has_id());
  EXPECT_FALSE(RawLine(R"({"id":7})").has_id());
  EXPECT_FALSE(RawLine(R"({"id":4294967296,"level":3})").has_id());
  EXPECT_FALSE(RawLine(R"({"id":7,"level":30,"attributes":{}})").has_level());
  EXPECT_FALSE(RawLine(R"({"writer":"h\u002f1/2","seq":1,"id":7,"level":3})").has_writer());
  for (const char* time :
       {"2026-11-21T08:15:60Z", "2026-11-21T08:15:30.5Z", "2026-11-21t08:15:30Z", "2026-11-21 08:15:30Z",
        "2026-11-21T08:15:30z", "2026-11-21T08:15:30+01:00", "2026-11-21T08:15:3\\u0030Z"}) {
    const std::string line = R"({"id":7,"level":3,"time":")" + std::string(time) + R"(","attributes":{"A":1}})";
    EXPECT_TRUE(RawLine(line).time().empty()) << time;
    EXPECT_EQ(found(line, "A").kind, RawValue::Kind::kUnknown) << time;
  }
}

struct Case {
  const char* attributes;
  RawValue::Kind kind;
};

TEST(RawLine, Attribute_IsKnownWhereItsBytesLeaveNoDoubt) {
  using Kind = RawValue::Kind;
  const Case cases[] = {
      {R"({"A":1}})", Kind::kInteger},
      {R"({"B":2,"A":1}})", Kind::kInteger},
      {R"({"B":"A","A":1}})", Kind::kInteger},
      {R"({"A":"","B":1}})", Kind::kText},
      {R"({"A":false}})", Kind::kBool},
      {R"({"B":1}})", Kind::kAbsent},
      {R"({"B":"A"}})", Kind::kAbsent},
      {R"({"B":"\"A\":1"}})", Kind::kAbsent},
      {R"({"B":"{\"A\":1}"}})", Kind::kAbsent},
      {R"({}})", Kind::kAbsent},
      {R"({"A" :1}})", Kind::kUnknown},
      {R"({"A": 1}})", Kind::kUnknown},
      {R"({ "A":1}})", Kind::kUnknown},
      {R"({"A":1 }})", Kind::kUnknown},
      {R"({"A":1.0}})", Kind::kUnknown},
      {R"({"A":1e2}})", Kind::kUnknown},
      {R"({"A":1234567890123456789}})", Kind::kUnknown},
      {R"({"A":null}})", Kind::kUnknown},
      {R"({"A":"x\n"}})", Kind::kUnknown},
      {R"({"A":"x)", Kind::kUnknown},
      {R"({"A")", Kind::kUnknown},
      {R"({"A":)", Kind::kUnknown},
      {R"({"B\"A":1}})", Kind::kUnknown},
      {R"({"\u0041":1}})", Kind::kUnknown},
      {R"({"B":"\u0041"}})", Kind::kUnknown},
      {R"({"A":1,"A":2}})", Kind::kInteger},  // no entry
      {R"({"A":truest}})", Kind::kUnknown},
      {R"({"A":true)", Kind::kUnknown},
      {R"({"A":-}})", Kind::kUnknown},
      {R"({"A":-1)", Kind::kUnknown},
  };
  for (const Case& tested : cases) {
    const std::string line = R"({"id":7,"level":3,"attributes":)" + std::string(tested.attributes);
    EXPECT_EQ(found(line, "A").kind, tested.kind) << line;
  }
}

TEST(RawLine, BytesInstead_AreSeen) {
  EXPECT_FALSE(RawLine(kWhole).may_give_bytes());
  EXPECT_TRUE(RawLine(R"({"id":7,"level":3,"attributes":{},"bytes":{"A":"eA=="}})").may_give_bytes());
}

TEST(RawKey, NamesOfMoreThanOneForm_AreNotPlain) {
  for (const char* name : {"", "a/b", "a\"b", "a\\b", "a b", "id", "name", "seq", "bytes", "TIMEZONE_DIFFERENCE",
                           "DAYLIGHT_SAVING_ACTIVE"}) {
    EXPECT_FALSE(RawKey(name).is_plain()) << name;
  }
  for (const char* name : {"A", "P1", "größe", "a.b-c", "Level"}) EXPECT_TRUE(RawKey(name).is_plain()) << name;
}

}  // namespace
