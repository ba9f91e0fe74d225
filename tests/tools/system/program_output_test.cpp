#include "tools/system/program_output.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <string>

#include "tests/support/signal_action.h"
#include "tools/system/command_error.h"

namespace {

using qz_test::SignalAction;
using qzlog_tool::CommandError;
using qzlog_tool::ProgramOutput;

std::string read_all(ProgramOutput& program, std::size_t piece = 7) {
  std::string text;
  std::string part(piece, ' ');
  for (std::size_t count = 0; (count = program.read(part.data(), part.size())) > 0;) text.append(part, 0, count);
  return text;
}

std::string error_of(const std::string& script) {
  ProgramOutput program({"sh", "-c", script});
  try {
    return "read: " + read_all(program);
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
    return error.what();
  }
}

TEST(ProgramOutput, Output_IsReadToItsEnd) {
  ProgramOutput program({"printf", "%s/%s", "a b", "$HOME"});
  EXPECT_EQ(read_all(program), "a b/$HOME");
  char more = 0;
  EXPECT_EQ(program.read(&more, 1), 0U);
}

TEST(ProgramOutput, OutputThatIsLong_NeedNotFitAPipe) {
  ProgramOutput program({"head", "-c", "1000000", "/dev/zero"});
  EXPECT_EQ(read_all(program, 65536), std::string(1000000, '\0'));
}

TEST(ProgramOutput, Output_IsReadAsItComes) {
  ProgramOutput program({"sh", "-c", "echo one; exec sleep 60"});
  char bytes[16];
  EXPECT_EQ(std::string(bytes, program.read(bytes, sizeof(bytes))), "one\n");
}

TEST(ProgramOutput, ProgramThatFails_SaysHowAndWhy) {
  EXPECT_EQ(error_of("echo output; exit 3"), "'sh' ended with the status 3");
  EXPECT_EQ(error_of("echo 'no such journal' >&2; exit 1"), "'sh' ended with the status 1: no such journal");
  EXPECT_EQ(error_of("kill -9 $$"), "'sh' was ended by the signal 9");
  EXPECT_EQ(error_of("echo a warning >&2; echo output"), "read: output\n");
}

TEST(ProgramOutput, MissingProgram_CannotRun) {
  try {
    const ProgramOutput program({"no-such-program-anywhere"}, "; it is in a package");
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot run 'no-such-program-anywhere': No such file or directory; it is in a package");
  }
}

TEST(ProgramOutput, ProgramThatIsNotReadToItsEnd_IsEnded) {
  const auto begin = std::chrono::steady_clock::now();
  { const ProgramOutput program({"sleep", "60"}); }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);  // and leaves nothing to wait for
}

TEST(ProgramOutput, ParentThatIgnoresEndedPrograms_LearnsHowTheyEnded) {
  const SignalAction ignored(SIGCHLD, SIG_IGN);
  EXPECT_EQ(error_of("exit 3"), "'sh' ended with the status 3");
  struct sigaction now = {};
  ::sigaction(SIGCHLD, nullptr, &now);
  EXPECT_EQ(now.sa_handler, SIG_IGN);
}

}  // namespace
