#include "tools/ship/line_parts.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

std::string parts_of(const std::string& line) {
  LinePartsFinder finder;
  LineParts parts;
  if (!finder.find(line, parts)) return "none";
  return (parts.has_identity ? std::string(parts.writer) + '/' + std::to_string(parts.seq) : "-") + ' ' +
         std::to_string(parts.id) + ' ' + std::to_string(parts.level) + ' ' + std::string(parts.event);
}

TEST(LineParts, Lines_SayThemInWhateverForm) {
  const struct {
    const char* line;
    const char* parts;
  } cases[] = {
      {R"({"writer":"h/1/2","seq":3,"written":"2026-11-21T08:15:30.5Z","definitions":"0","id":7,"level":9,"time":"2026-11-21T08:15:30Z","name":"A","attributes":{"name":"B"}})",
       "h/1/2/3 7 9 A"},
      {R"({"id":7,"level":9,"attributes":{"name":"B"}})", "- 7 9 "},
      {R"({"id":7,"level":9,"attributes":{"X":",\"name\":\""}})", "- 7 9 "},
      {R"({ "seq" : 3, "id" : 7, "writer" : "h\/1", "name" : "A\u0042" })", "h/1/3 7 0 AB"},
      {R"({"writer":"h","id":7,"level":9,"attributes":{}})", "- 7 9 "},
      {R"({"seq":18446744073709551615,"writer":"h","id":7})", "h/18446744073709551615 7 0 "},
      {R"({"id":"NAME","level":2})", "- 0 2 NAME"},
      {R"({"lost":[{"id":1,"level":2,"count":3,"name":"X"}],"writer":"h/9/9","seq":4})", "h/9/9/4 0 -1 "},
      {R"({"writer":"h/1/2","seq":3,"id":7,"level":9,"attributes":{"A":1)", "none"},
      {R"({"writer":"h/1/2","se)", "none"},
      {"[1]", "none"},
      {"1", "none"},
      {"\xFF", "none"},
  };
  for (const auto& [line, parts] : cases) EXPECT_EQ(parts_of(line), parts) << line;
}

}  // namespace
}  // namespace qzlog_tool
