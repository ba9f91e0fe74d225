#include "tools/system/stop_signals.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/child_process.h"

namespace qzlog_tool {
namespace {

using qz_test::ChildProcess;

TEST(StopSignals, Signal_IsARequestWhileOneLives) {
  qz_test::expect_child_succeeds([] {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      const StopSignals signals;
      std::raise(signal);
      if (StopSignals::requested() != signal) return 1;
    }
    return 0;
  });
}

TEST(StopSignals, NextSignal_EndsTheProcess) {
  EXPECT_EQ(ChildProcess([] {
              const StopSignals signals;
              std::raise(SIGTERM);
              std::raise(SIGTERM);
              return 0;
            }).wait(),
            -SIGTERM);
}

TEST(StopSignals, AfterTheLast_SignalsAreAsBefore) {
  EXPECT_EQ(ChildProcess([] {
              { const StopSignals signals; }
              std::raise(SIGINT);
              return 0;
            }).wait(),
            -SIGINT);
}

TEST(StopSignals, IgnoredSignal_StaysIgnored) {
  qz_test::expect_child_succeeds([] {
    std::signal(SIGINT, SIG_IGN);
    const StopSignals signals;
    std::raise(SIGINT);
    end_by_signal(SIGINT);
    return StopSignals::requested();
  });
}

TEST(StopSignals, EndBySignal_IsSeenByTheParent) {
  for (const int signal : {SIGINT, SIGPIPE}) {
    EXPECT_EQ(ChildProcess([signal] {
                end_by_signal(signal);
                return 0;
              }).wait(),
              -signal);
  }
}

}  // namespace
}  // namespace qzlog_tool
