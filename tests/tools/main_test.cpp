#include <gtest/gtest.h>

#include <string>

#include "tests/tools/command_fixture.h"
#include "tests/tools/command_table.h"

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

TEST_F(MainCommand, WrongUsage_IsExplainedWithStatus2) {
  std::string commands;
  const qzlog_tool::CommandNode root = qzlog_tool::command_line_tree();
  for (const qzlog_tool::CommandNode& command : root.subcommands) commands += " " + command.last_name();
  const struct {
    const char* arguments;
    std::string text;
  } cases[] = {
      {"", "A subcommand is required"},
      {"render --colour", "'--colour' was not expected"},
      {"rendre", "'rendre' was not expected; did you mean 'render'? The commands are" + commands},
      {"frobnicate", "'frobnicate' was not expected; the commands are" + commands},
      {"catalog extrct x.yaml", "'extrct' was not expected; did you mean 'extract'?"},
      {"render --defintions x.ldf", "'--defintions' was not expected; did you mean '--definitions'?"},
      {"render --definitions x.ldf --levl=3",
       "The following argument was not expected: --levl=3; did you mean '--level'?"},
      {"compile x.yaml --outptu x.ldf",
       "The following arguments were not expected: x.ldf --outptu; did you mean '--output'?"},
      {"render", "--definitions is required"},
      {"render --definitions x.ldf --colour", "The following argument was not expected: --colour"},
      {"render --definitions", "--definitions: 1 required STD.ldf|STD.yaml missing"},
  };
  for (const auto& row : cases) {
    const CommandResult result = run(std::string("$QZLOG ") + row.arguments);
    EXPECT_EQ(result.status, 2) << row.arguments;
    EXPECT_EQ(result.out, "") << row.arguments;
    EXPECT_EQ(result.err,
              "qzlog: error: " + row.text + "\nRun 'qzlog --help' or 'qzlog COMMAND --help' for the usage.\n");
  }
}

TEST_F(MainCommand, HelpToAFullDevice_IsAnError) {
  const CommandResult result = run("$QZLOG --help >/dev/full");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "qzlog: error: cannot write to standard output: No space left on device\n");
}

}  // namespace
