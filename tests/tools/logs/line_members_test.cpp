#include "tools/logs/line_members.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

/// Who wrote a line, and as which of his.
std::string read(const std::string& line) {
  const std::optional<LineMembers> members = read_line_members(line);
  return members && !members->writer.empty() && members->seq ? members->writer + ' ' + std::to_string(*members->seq)
                                                             : "none";
}

TEST(LineMembers, LineOfAWriter_IsKnownWhateverElseItSays) {
  EXPECT_EQ(read(R"({"writer":"h/1/2","seq":7,"id":"nobody"})"), "h/1/2 7");
  EXPECT_EQ(read(R"({"seq":18446744073709551615,"x":{"seq":1,"writer":"inner"},"writer":"h/1/2"})"),
            "h/1/2 18446744073709551615");
  EXPECT_EQ(read(R"({"writer":"\u0068/1/2","se\u0071":7,"a":[{"seq":3}]})"), "h/1/2 7");
}

TEST(LineMembers, LineThatDoesNotSayBoth_HasNone) {
  EXPECT_EQ(read(R"({"writer":"h/1/2"})"), "none");
  EXPECT_EQ(read(R"({"seq":7})"), "none");
  EXPECT_EQ(read(R"({"writer":"","seq":7})"), "none");
  EXPECT_EQ(read(R"({"writer":"h/1/2","seq":-7})"), "none");
  EXPECT_EQ(read(R"({"writer":"h/1/2","seq":7.0})"), "none");
  EXPECT_EQ(read(R"({"writer":["h/1/2"],"seq":"7"})"), "none");
  EXPECT_EQ(read(R"([{"writer":"h/1/2","seq":7}])"), "none");
  EXPECT_EQ(read(""), "none");
}

TEST(LineMembers, AllThatIsThere_IsRead) {
  const std::optional<LineMembers> members = read_line_members(
      R"({"writer":"h/1/2","seq":7,"written":"W","definitions":"D","id":"NAME","time":"T","x":{"time":"inner"}})");
  ASSERT_TRUE(members);
  EXPECT_EQ(members->symbolic_id, "NAME");
  EXPECT_EQ(members->id, std::nullopt);
  EXPECT_EQ(members->time, "T");
  EXPECT_EQ(members->written, "W");
  EXPECT_EQ(members->definitions, "D");
  EXPECT_EQ(read_line_members(R"({"id":4294967295})")->id, 4294967295U);
  EXPECT_EQ(read_line_members(R"({"id":4294967296})")->id, std::nullopt);
}

TEST(LineMembers, EveryBeginningOfALine_HasNone) {
  const std::string line = R"({"writer":"h/1/2","seq":7,"id":1,"attributes":{"N":5}})";
  for (std::size_t length = 0; length < line.size(); ++length) EXPECT_EQ(read(line.substr(0, length)), "none");
  EXPECT_EQ(read(line), "h/1/2 7");
}

}  // namespace
}  // namespace qzlog_tool
