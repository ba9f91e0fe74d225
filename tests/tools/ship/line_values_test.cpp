#include "tools/ship/line_values.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

std::string text_of(const qzlog_value& value) {
  switch (value.kind) {
    case QZLOG_BOOL:
      return value.integer != 0 ? "true" : "false";
    case QZLOG_INTEGER:
      return std::to_string(value.integer);
    case QZLOG_NUMBER:
      return std::to_string(value.number);
    case QZLOG_TEXT:
      return "\"" + std::string(value.text.bytes, value.text.size) + "\"";
    default:
      return "absent";
  }
}

TEST(LineValues, MembersAndAttributes_AreFoundByName) {
  LineValues values;
  ASSERT_TRUE(values.read(
      R"({"id":1,"time":"T","lost":[{"id":7}],"attributes":{"A":-5,"B":true,"C":"a\n\u00e4","id":9,"D":1.5,"E":18446744073709551615,"F":{"A":1},"G":[2],"H":null,"I":""},"bytes":{"C":"x"},"seq":2})"));
  EXPECT_EQ(text_of(values.find_member("id")), "1");
  EXPECT_EQ(text_of(values.find_member("time")), "\"T\"");
  EXPECT_EQ(text_of(values.find_member("seq")), "2");
  EXPECT_EQ(text_of(values.find_member("lost")), "absent");
  EXPECT_EQ(text_of(values.find_member("A")), "absent");
  EXPECT_EQ(text_of(values.find_attribute("A")), "-5");
  EXPECT_EQ(text_of(values.find_attribute("B")), "true");
  EXPECT_EQ(text_of(values.find_attribute("C")), "\"a\n\xC3\xA4\"");
  EXPECT_EQ(text_of(values.find_attribute("id")), "9");
  EXPECT_EQ(text_of(values.find_attribute("D")), "1.500000");
  EXPECT_EQ(text_of(values.find_attribute("E")), "18446744073709551616.000000");
  EXPECT_EQ(text_of(values.find_attribute("I")), "\"\"");
  EXPECT_EQ(values.attributes().size(), 7U);
}

TEST(LineValues, WhatIsNoObject_HasNothing) {
  LineValues values;
  for (const char* const line : {"", "[1]", "{\"id\":1", "{\"id\":1}x", "\xFF"}) {
    EXPECT_FALSE(values.read(line)) << line;
    EXPECT_EQ(text_of(values.find_member("id")), "absent") << line;
  }
}

}  // namespace
}  // namespace qzlog_tool
