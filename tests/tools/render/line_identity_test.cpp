#include "tools/render/line_identity.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

std::string read(const std::string& line) {
  const std::optional<LineIdentity> identity = line_identity(line);
  return identity ? identity->writer + ' ' + std::to_string(identity->seq) : "none";
}

TEST(LineIdentity, LineOfAWriter_IsKnownWhateverElseItSays) {
  EXPECT_EQ(read(R"({"writer":"h/1/2","seq":7,"id":"nobody"})"), "h/1/2 7");
  EXPECT_EQ(read(R"({"seq":18446744073709551615,"x":{"seq":1,"writer":"inner"},"writer":"h/1/2"})"),
            "h/1/2 18446744073709551615");
  EXPECT_EQ(read(R"({"writer":"\u0068/1/2","se\u0071":7,"a":[{"seq":3}]})"), "h/1/2 7");
}

TEST(LineIdentity, LineThatDoesNotSayBoth_HasNone) {
  EXPECT_EQ(read(R"({"writer":"h/1/2"})"), "none");
  EXPECT_EQ(read(R"({"seq":7})"), "none");
  EXPECT_EQ(read(R"({"writer":"","seq":7})"), "none");
  EXPECT_EQ(read(R"({"writer":"h/1/2","seq":-7})"), "none");
  EXPECT_EQ(read(R"({"writer":"h/1/2","seq":7.0})"), "none");
  EXPECT_EQ(read(R"({"writer":["h/1/2"],"seq":"7"})"), "none");
  EXPECT_EQ(read(R"([{"writer":"h/1/2","seq":7}])"), "none");
  EXPECT_EQ(read(""), "none");
}

TEST(LineIdentity, EveryBeginningOfALine_HasNone) {
  const std::string line = R"({"writer":"h/1/2","seq":7,"id":1,"attributes":{"N":5}})";
  for (std::size_t length = 0; length < line.size(); ++length) EXPECT_EQ(read(line.substr(0, length)), "none");
  EXPECT_EQ(read(line), "h/1/2 7");
}

}  // namespace
}  // namespace qzlog_tool
