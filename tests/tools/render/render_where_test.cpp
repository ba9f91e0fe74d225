// --where as users give it, to `qzlog render` and `qzlog stats`.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/tools/command_fixture.h"
#include "tests/tools/pseudo_terminal.h"

namespace {

using qzlog_test::CommandResult;

constexpr const char* kCommands[] = {"render", "stats --csv"};

std::string repeated(const std::string& text, std::size_t count) {
  std::string result;
  for (; count > 0; --count) result += text;
  return result;
}

class RenderWhere : public qzlog_test::RenderFixture {
 protected:
  RenderWhere() {
    write("entries.jsonl",
          "{\"id\":1001,\"level\":7,\"attributes\":{\"Name\":\"vol1\",\"Free\":9,\"Total\":4096}}\n"
          "{\"id\":1001,\"level\":7,\"attributes\":{\"Name\":\"vol2\",\"Free\":90,\"Total\":4096,\"Reason\":10}}\n"
          "{\"id\":1005}\n");
  }

  /// The expression comes from a file: a line of shell has its own bounds.
  CommandResult run_with(const std::string& command, const std::string& expression) const {
    write("expression", expression);
    return run("$QZLOG " + command + " --definitions storage.yaml --where \"$(cat expression)\" entries.jsonl");
  }
};

TEST_F(RenderWhere, Example_ChoosesWhatItSays) {
  const CommandResult result = run_with("render", "Free < 10 and (Name ~ \"vol*\" or Reason = 10) and missing(Reason)");
  EXPECT_EQ(result.out, "Disk vol1 is full: 9 of 4096 blocks free\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderWhere, Mistakes_AreShownWithPlacesAndSuggestions) {
  for (const char* const command : kCommands) {
    const CommandResult result = run_with(command, "Fre < 10 or Free > 4294967296 or\n Name >= \"a\"");
    EXPECT_EQ(result.err,
              "--where:1:1: error: the definitions have no attribute 'Fre' [undefined-attribute]\n"
              "    1 | Fre < 10 or Free > 4294967296 or\n"
              "      | ^\n"
              "  hint: did you mean 'Free'?\n"
              "--where:1:20: error: 'Free': 4294967296 does not fit UInt4 (0 to 4294967295) [value-range]\n"
              "    1 | Fre < 10 or Free > 4294967296 or\n"
              "      |                    ^\n"
              "--where:2:7: error: 'Name' is Char32 in entry 1001, which has no '>=' [no-such-comparison]\n"
              "    2 |  Name >= \"a\"\n"
              "      |       ^\n"
              "  hint: texts have = != ~ !~ and in\n")
        << command;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 2);
  }
}

TEST_F(RenderWhere, LargestExpressions_AreTaken) {
  std::string alternatives = "Free = 9";
  for (int number = 1000; alternatives.size() < 65'500; ++number)
    alternatives += " or Free = " + std::to_string(number);
  const std::string deep = repeated("(", 200) + "Free = 9" + repeated(")", 200);
  for (const std::string& expression : {alternatives, deep, repeated("not ", 10'000) + "Free = 9"}) {
    for (const char* const command : kCommands) {
      const CommandResult result = run_with(command, expression);
      EXPECT_EQ(result.err, "");
      EXPECT_EQ(result.status, 0);
      EXPECT_EQ(result.out, *command == 'r' ? "Disk vol1 is full: 9 of 4096 blocks free\n"
                                            : "id,name,count,share,first,last,kind\r\n1001,DISK_FULL,1,1,,,value\r\n");
    }
  }
}

TEST_F(RenderWhere, LargerOnes_AreRefusedInAFewLines) {
  for (const std::string& expression :
       {repeated("(", 10'000) + "Free = 9" + repeated(")", 10'000), repeated("Free = 9 or ", 10'000) + "Free = 9",
        repeated("not (", 10'000), repeated("\xFF", 60'000), repeated("@", 60'000), repeated("'", 60'001),
        repeated("Free in (", 6000), repeated("Fre = 1 or ", 5900) + "Fre = 1", repeated("\n", 60'000) + "(",
        "Name = '" + repeated("x", 65'000), "`" + repeated("\\u001b", 10'000) + "` = 1"}) {
    for (const char* const command : kCommands) {
      const CommandResult result = run_with(command, expression);
      EXPECT_EQ(result.status, 2) << expression.substr(0, 30);
      EXPECT_EQ(result.out, "");
      EXPECT_NE(result.err.find("error: "), std::string::npos) << expression.substr(0, 30);
      EXPECT_LT(std::count(result.err.begin(), result.err.end(), '\n'), 100) << expression.substr(0, 30);
    }
  }
}

TEST_F(RenderWhere, HostileExpression_IsShownSafelyOnATerminal) {
  write("expression", "Name = \"\033]0;x\a\u009B2J\u202E\" and \033[31mFre = 1 or 'x\r");
  const auto [status, shown] = qzlog_test::run_on_terminal(
      folder_.path(), "NO_COLOR=1 $QZLOG render --definitions storage.yaml --where \"$(cat expression)\" entries.jsonl",
      40);
  EXPECT_EQ(status, 2);
  EXPECT_NE(shown.find("error: "), std::string::npos) << shown;
  for (const std::string unsafe : {"\033", "\a", "\r", "\u009B", "\u202E"}) {
    EXPECT_EQ(shown.find(unsafe), std::string::npos) << shown;
  }
}

}  // namespace
