#include "tools/system/signal_delay.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "tests/support/temp_dir.h"
#include "tools/system/temporary_folder.h"

namespace {

using qzlog_tool::SignalDelay;

/// What a process that does this ends with, as waitpid tells it.
int end_of(const std::function<void()>& action) {
  const pid_t process = ::fork();
  if (process == 0) {
    action();
    ::_exit(0);
  }
  int status = 0;
  EXPECT_EQ(::waitpid(process, &status, 0), process);
  return status;
}

bool is_killed_by(int status, int signal) { return WIFSIGNALED(status) && WTERMSIG(status) == signal; }

TEST(SignalDelayTest, Signal_EndsTheProcessWhenTheOutermostDies) {
  const qz_test::TempDir folder;
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGPIPE}) {
    const int status = end_of([&] {
      std::signal(signal, SIG_DFL);
      {
        const SignalDelay outer;
        {
          const SignalDelay inner;
          ::raise(signal);
        }
        folder.write(std::to_string(signal), "finished");
      }
      folder.write("after", "");
    });
    EXPECT_TRUE(is_killed_by(status, signal)) << signal;
    EXPECT_EQ(folder.read(std::to_string(signal)), "finished");
    EXPECT_FALSE(std::filesystem::exists(folder.path("after"))) << signal;
  }
}

TEST(SignalDelayTest, IgnoredSignal_StaysIgnoredAndIsNotWaitedFor) {
  const int status = end_of([] {
    std::signal(SIGHUP, SIG_IGN);
    const SignalDelay delay;
    if (sigismember(&SignalDelay::delayed(), SIGHUP) != 0) ::_exit(1);
    if (sigismember(&SignalDelay::delayed(), SIGUSR1) != 1) ::_exit(2);
    ::raise(SIGHUP);
  });
  EXPECT_EQ(status, 0);
}

TEST(SignalDelayTest, BlockedSignal_StaysBlocked) {
  const int status = end_of([] {
    sigset_t term = {};
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &term, nullptr);
    {
      const SignalDelay delay;
      ::raise(SIGTERM);
    }
    sigset_t pending = {};
    ::sigpending(&pending);
    ::_exit(sigismember(&pending, SIGTERM) == 1 ? 0 : 1);
  });
  EXPECT_EQ(status, 0);
}

TEST(SignalDelayTest, TemporaryFolder_IsRemovedBeforeTheSignalComes) {
  const qz_test::TempDir parent;
  const int status = end_of([&] {
    ::setenv("TMPDIR", parent.path().c_str(), 1);
    const qzlog_tool::TemporaryFolder folder;
    folder.add_file("f", "x");
    ::raise(SIGTERM);
  });
  EXPECT_TRUE(is_killed_by(status, SIGTERM));
  EXPECT_TRUE(std::filesystem::is_empty(parent.path()));
}

}  // namespace
