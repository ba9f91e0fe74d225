#include <gtest/gtest.h>

#include <string>

#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;

using MainCommand = CommandFixture;

TEST_F(MainCommand, Version_IsPrinted) {
  const CommandResult result = run("$QZLOG --version");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "qzlog 1.0.0\n");
  EXPECT_EQ(result.err, "");
}

TEST_F(MainCommand, Help_NamesEverySubcommand) {
  const CommandResult result = run("$QZLOG --help");
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.out.find("  compile "), std::string::npos);
  EXPECT_NE(result.out.find("  render "), std::string::npos);
  EXPECT_NE(result.out.find("  count "), std::string::npos);
  EXPECT_EQ(result.err, "");
}

TEST_F(MainCommand, HelpOfSubcommands_ShowsExamples) {
  for (const std::string command : {"compile", "render", "count"}) {
    const CommandResult result = run("$QZLOG " + command + " --help");
    EXPECT_EQ(result.status, 0) << command;
    EXPECT_NE(result.out.find("Examples:\n  qzlog " + command + " "), std::string::npos) << result.out;
    EXPECT_EQ(result.err, "") << command;
  }
}

TEST_F(MainCommand, WrongUsage_IsExplainedWithStatus2) {
  const struct {
    const char* arguments;
    const char* text;
  } cases[] = {
      {"", "A subcommand is required"},
      {"render --colour", "'--colour' was not expected"},
      {"rendre", "'rendre' was not expected; the commands are compile render count catalog"},
      {"render", "--definitions is required"},
      {"render --definitions x.ldf --colour", "The following argument was not expected: --colour"},
      {"render --definitions x.ldf one.jsonl two.jsonl", "The following argument was not expected: two.jsonl"},
      {"render --definitions", "--definitions: 1 required STD.ldf|STD.yaml missing"},
  };
  for (const auto& row : cases) {
    const CommandResult result = run(std::string("$QZLOG ") + row.arguments);
    EXPECT_EQ(result.status, 2) << row.arguments;
    EXPECT_EQ(result.out, "") << row.arguments;
    EXPECT_EQ(result.err, std::string("qzlog: error: ") + row.text +
                              "\nRun 'qzlog --help' or 'qzlog COMMAND --help' for the usage.\n");
  }
}

TEST_F(MainCommand, HelpToAFullDevice_IsAnError) {
  const CommandResult result = run("$QZLOG --help >/dev/full");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "qzlog: error: cannot write to standard output: No space left on device\n");
}

}  // namespace
