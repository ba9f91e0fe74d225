#include "tools/system/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include "tests/support/scoped_environment.h"
#include "tools/system/file_descriptor.h"

namespace {

using qz_test::SetEnv;
using qz_test::UnsetEnv;
using qzlog_tool::FileDescriptor;

// Puts a new terminal in the place of stderr.
class TerminalTest : public ::testing::Test {
 protected:
  TerminalTest() : stderr_(::dup(STDERR_FILENO)) {}
  ~TerminalTest() override { ::dup2(stderr_.get(), STDERR_FILENO); }

  void use_terminal() {
    int controller = -1;
    int terminal = -1;
    ASSERT_EQ(::openpty(&controller, &terminal, nullptr, nullptr, nullptr), 0);
    controller_ = FileDescriptor(controller);
    const FileDescriptor closed_after(terminal);
    ASSERT_EQ(::dup2(terminal, STDERR_FILENO), STDERR_FILENO);
  }

  UnsetEnv colour_wanted_{"NO_COLOR"};
  SetEnv kind_of_terminal_{"TERM", "xterm"};
  FileDescriptor stderr_;
  FileDescriptor controller_{-1};
};

TEST_F(TerminalTest, Colour_OnATerminal) {
  use_terminal();
  EXPECT_TRUE(qzlog_tool::stderr_has_colour());
}

TEST_F(TerminalTest, Colour_NotWithNoColor) {
  use_terminal();
  const SetEnv no_color("NO_COLOR", "1");
  EXPECT_FALSE(qzlog_tool::stderr_has_colour());
}

TEST_F(TerminalTest, Colour_WithEmptyNoColor) {
  use_terminal();
  const SetEnv no_color("NO_COLOR", "");
  EXPECT_TRUE(qzlog_tool::stderr_has_colour());
}

TEST_F(TerminalTest, Colour_NotOnADumbTerminal) {
  use_terminal();
  const SetEnv dumb("TERM", "dumb");
  EXPECT_FALSE(qzlog_tool::stderr_has_colour());
}

TEST_F(TerminalTest, Colour_NotInAFile) {
  const FileDescriptor null(::open("/dev/null", O_WRONLY));
  ASSERT_EQ(::dup2(null.get(), STDERR_FILENO), STDERR_FILENO);
  EXPECT_FALSE(qzlog_tool::stderr_has_colour());
}

}  // namespace
