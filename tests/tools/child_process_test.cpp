#include "tools/child_process.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/command_error.h"

namespace {

using qzlog_tool::CommandError;
using qzlog_tool::ProgramResult;
using qzlog_tool::run_program;

TEST(RunProgram, Output_IsTakenWhole) {
  constexpr std::size_t kMoreThanAPipeHolds = 300000;
  const ProgramResult result = run_program({"head", "-c", std::to_string(kMoreThanAPipeHolds), "/dev/zero"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, std::string(kMoreThanAPipeHolds, '\0'));
}

TEST(RunProgram, Arguments_ReachTheProgramAsTheyStand) {
  const ProgramResult result = run_program({"printf", "<%s>", "$HOME", "a b", "", "`id`", ";", "*"});
  EXPECT_EQ(result.output, "<$HOME><a b><><`id`><;><*>");
}

TEST(RunProgram, StandardInput_IsEmpty) {
  const ProgramResult result = run_program({"cat"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
}

TEST(RunProgram, FailingProgram_GivesItsStatus) { EXPECT_EQ(run_program({"sh", "-c", "exit 7"}).status, 7); }

TEST(RunProgram, KilledProgram_Gives128AndTheSignal) {
  EXPECT_EQ(run_program({"sh", "-c", "kill -9 $$"}).status, 128 + 9);
}

TEST(RunProgram, MissingProgram_CannotRun) {
  try {
    run_program({"no-such-program-anywhere"});
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot run 'no-such-program-anywhere': No such file or directory");
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
  }
}

}  // namespace
