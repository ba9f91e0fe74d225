#include "tools/logs/attribute_value.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <variant>

#include "qzlog/entry_lines.h"
#include "qzlog/logcfg.h"
#include "tests/support/support.h"
#include "tests/support/temp_dir.h"
#include "tools/definitions/loaded_definitions.h"

namespace {

using qzlog_tool::AttributeValue;
using qzlog_tool::read_attribute;
using qzlog_tool::StoredMoment;
using qzlog_tool::StoredText;

constexpr const char* kDefinitions = R"(version: "1.0"
entries:
  - id: 1
    name: ALL
    message: all
    attributes:
      - {name: Flag, type: Bool}
      - {name: U1, type: UInt1}
      - {name: S1, type: SInt1}
      - {name: U2, type: UInt2}
      - {name: S2, type: SInt2}
      - {name: U4, type: UInt4}
      - {name: S4, type: SInt4}
      - {name: Real, type: Float}
      - {name: Narrow, type: Char2K}
      - {name: Wide, type: MBChar32}
      - {name: Day, type: Date}
      - {name: Clock, type: Time}
      - {name: When, type: Timestamp}
      - {name: Guid, type: GUID}
)";

class AttributeValueTest : public ::testing::Test {
 protected:
  AttributeValueTest() {
    qzlog_tool::load_definitions(folder_.write("d.yaml", kDefinitions), "", qzlog_compiler::RenderingPaths::kIcu);
  }
  ~AttributeValueTest() override { qz_LOG_LogConfig::ClearDefinitions(); }

  /// Of an entry whose only attribute this is.
  AttributeValue read(const std::string& name, const std::string& value) {
    text_ = R"({"id":1,"attributes":{")" + name + "\":" + value + "}}";
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(text_.data(), text_.size());
    EXPECT_TRUE(reader.Next(line_)) << text_;
    return read_attribute(line_.GetEntry(), name.c_str());
  }
  long long integer(const std::string& name, const std::string& value) {
    return std::get<long long>(read(name, value));
  }
  std::string text(const std::string& name, const std::string& value) {
    return std::get<StoredText>(read(name, value)).text;
  }
  void expect_moment(const std::string& name, qz_AttributeType type) {
    const auto moment = std::get<StoredMoment>(read(name, "\"2026-11-21T08:15:30Z\""));
    EXPECT_EQ(moment.type, type);
    EXPECT_EQ(moment.seconds, 1795248930);
  }

  qz_test::TimeZone zone_{"Asia/Kathmandu"};
  qz_test::TempDir folder_;
  std::string text_;
  qz_LOG_EntryLine line_;
};

TEST_F(AttributeValueTest, Integers_AreReadToTheEndsOfTheirTypes) {
  EXPECT_EQ(integer("U1", "255"), 255);
  EXPECT_EQ(integer("S1", "-128"), -128);
  EXPECT_EQ(integer("S1", "127"), 127);
  EXPECT_EQ(integer("U2", "65535"), 65535);
  EXPECT_EQ(integer("S2", "-32768"), -32768);
  EXPECT_EQ(integer("U4", "4294967295"), 4294967295);
  EXPECT_EQ(integer("S4", "-2147483648"), std::numeric_limits<int>::min());
}

TEST_F(AttributeValueTest, OtherTypes_AreReadAsWhatTheyHold) {
  EXPECT_TRUE(std::get<bool>(read("Flag", "true")));
  EXPECT_EQ(std::get<double>(read("Real", "-0.5")), -0.5);
  EXPECT_EQ(text("Narrow", "\"vol1\""), "vol1");
  EXPECT_EQ(text("Wide", "\"\""), "");
  expect_moment("Day", TypeDate);
  expect_moment("Clock", TypeTime);
  expect_moment("When", TypeTimestamp);
}

TEST_F(AttributeValueTest, WhatIsNotThere_IsNone) {
  read("U1", "1");
  for (const char* const name : {"U2", "Narrow", "When", "Guid", "Unknown", ""}) {
    EXPECT_TRUE(std::holds_alternative<std::monostate>(read_attribute(line_.GetEntry(), name))) << name;
  }
}

}  // namespace
