#include <gtest/gtest.h>

#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"
#include "tests/tools/pseudo_terminal.h"

namespace {

constexpr const char* kSource = "version: \"1.0\"\nentries:\n  - {id: 1, name: ONE, message: one}\n";

/// A source that comes late.
class LongJobs : public qzlog_test::CommandFixture {
 protected:
  LongJobs() { write("d.yaml", kSource); }

  qzlog_test::TerminalRun run_late(const std::string& arguments) const {
    return qzlog_test::run_on_terminal(folder_.path(""), "(sleep 1.4; cat d.yaml) | $QZLOG " + arguments);
  }

  qz_test::SetEnv terminal_{"TERM", "xterm-256color"};
};

TEST_F(LongJobs, MoreThanASecondOnATerminal_IsShownAndTakenAway) {
  EXPECT_EQ(run_late("check -").shown, "\r\033[Kchecking <stdin>: 1 s\r\033[K");
  EXPECT_EQ(run_late("compile - -o d.ldf").shown, "\r\033[Kcompiling <stdin>: 1 s\r\033[K");
  EXPECT_EQ(run_late("catalog extract - -o d.pot").shown, "\r\033[Kreading <stdin>: 1 s\r\033[K");
}

TEST_F(LongJobs, QuietShortOrElsewhere_ShowNothing) {
  EXPECT_EQ(run_late("check - --quiet").shown, "");
  EXPECT_EQ(qzlog_test::run_on_terminal(folder_.path(""), "$QZLOG check d.yaml").shown, "");
  EXPECT_EQ(run("(sleep 1.4; cat d.yaml) | $QZLOG check -").err, "");
  const qz_test::SetEnv dumb("TERM", "dumb");
  EXPECT_EQ(run_late("check -").shown, "");
}

}  // namespace
