#include "tools/system/child_process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <initializer_list>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/support/signal_action.h"
#include "tools/system/command_error.h"
#include "tools/system/memory_file.h"
#include "tools/system/signal_delay.h"

namespace {

using qz_test::SignalAction;
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

/// A set of signals, as the system tells it of the program's process.
unsigned long long program_signals(const std::string& field) {
  return std::stoull(run_program({"sh", "-c", "grep ^" + field + ": /proc/self/status | cut -f 2"}).output, nullptr,
                     16);
}

unsigned long long set_of(std::initializer_list<int> signals) {
  unsigned long long set = 0;
  for (const int signal : signals) set |= 1ULL << (signal - 1);
  return set;
}

// A parent may have told us to ignore it; the system then keeps no child's status.
TEST(RunProgram, IgnoredSigchld_StatusIsKnownAllTheSame) {
  const SignalAction ignored(SIGCHLD, SIG_IGN);
  const ProgramResult result = run_program({"sh", "-c", "echo out; exit 7"});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.output, "out\n");
  EXPECT_EQ(::signal(SIGCHLD, SIG_IGN), SIG_IGN) << "it is as it was";
}

TEST(RunProgram, Signals_AreAsAProgramExpectsThem) {
  const SignalAction size(SIGXFSZ, SIG_IGN);
  const SignalAction pipe(SIGPIPE, SIG_IGN);
  const qzlog_tool::SignalDelay delay;
  EXPECT_EQ(program_signals("SigBlk") & set_of({SIGTERM, SIGINT, SIGHUP, SIGCHLD}), 0u);
  EXPECT_EQ(program_signals("SigIgn") & set_of({SIGPIPE, SIGXFSZ}), 0u);
}

TEST(RunProgram, DescriptorsOfOurs_AreNotTheProgramsToo) {
  const qzlog_tool::MemoryFile file("x");
  EXPECT_EQ(run_program({"sh", "-c", "readlink /proc/$$/fd/* | grep --count memfd:qzlog"}).output, "2\n")
      << "its output and its errors alone";
}

TEST(RunProgram, Variables_ComeBeforeThoseOfTheEnvironment) {
  const qz_test::SetEnv ours("QZLOG_TEST_OURS", "old");
  const qz_test::SetEnv kept("QZLOG_TEST_KEPT", "kept");
  const ProgramResult result =
      run_program({"sh", "-c", "env | grep ^QZLOG_TEST | sort"}, qzlog_tool::ProgramErrors::kToOurs,
                  {"QZLOG_TEST_OURS=new", "QZLOG_TEST_NEW=x"});
  EXPECT_EQ(result.output, "QZLOG_TEST_KEPT=kept\nQZLOG_TEST_NEW=x\nQZLOG_TEST_OURS=new\n");
}

TEST(RunProgram, SignalForUs_EndsTheProgramAndIsStillThere) {
  const qzlog_tool::SignalDelay delay;
  EXPECT_THROW(run_program({"sh", "-c", "kill -TERM $PPID; exec tail -f /dev/null"}), CommandError);
  sigset_t term = {};
  sigemptyset(&term);
  sigaddset(&term, SIGTERM);
  const timespec now = {};
  EXPECT_EQ(::sigtimedwait(&term, nullptr, &now), SIGTERM);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST(RunApart, Status_IsWhatTheWorkReturns) {
  const SignalAction ignored(SIGCHLD, SIG_IGN);
  EXPECT_EQ(qzlog_tool::run_apart("a test", [] { return 0; }), 0);
  EXPECT_EQ(qzlog_tool::run_apart("a test", [] { return 7; }), 7);
}

TEST(RunApart, EndOfTheCopy_IsNotOurs) {
  EXPECT_EQ(qzlog_tool::run_apart("a test", [] { return ::raise(SIGKILL); }), 128 + SIGKILL);
  EXPECT_EQ(qzlog_tool::run_apart("a test", []() -> int { ::_exit(3); }), 3);
}

TEST(RunApart, WhatItChanges_StaysInTheCopy) {
  int number = 1;
  EXPECT_EQ(qzlog_tool::run_apart("a test", [&] { return ++number; }), 2);
  EXPECT_EQ(number, 1);
}

}  // namespace
