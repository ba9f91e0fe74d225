#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <thread>

#include "qzlog.h"
#include "tests/processes/logging.h"
#include "tests/support/child_process.h"
#include "tests/support/debug_log_file.h"
#include "tests/support/rounds.h"

namespace qz_test {
namespace {

constexpr unsigned kThreads = 4;
constexpr int kWrongEntry = 3;

/// How often on each path; the environment may ask for more.
int runs() {
  const char* const wanted = std::getenv("QZLOG_TEST_RUNS");
  return wanted != nullptr ? std::atoi(wanted) : rounds(80);
}

class ExitWhileThreadsLog : public testing::TestWithParam<Path> {};

/// Ends the process while threads log. What they need has to be there until it is gone.
[[noreturn]] void exit_from_among_threads(const Logging& logging, int entries_before) {
  for (unsigned thread = 1; thread <= kThreads; ++thread) {
    std::thread([&logging, thread] {
      for (unsigned round = 0;; ++round) {
        if (logging.wrong_entries(thread * 1000 + round, 5) != 0) _exit(kWrongEntry);
      }
    }).detach();
  }
  std::exit(logging.wrong_entries(1, entries_before));
}

std::map<int, int> statuses_of_runs(const Logging& logging, int count) {
  std::map<int, int> statuses;
  for (int run = 0; run < count; ++run) {
    ++statuses[ChildProcess([&]() -> int { exit_from_among_threads(logging, run % 8); }).wait()];
  }
  return statuses;
}

TEST_P(ExitWhileThreadsLog, ManyRuns_NoneCrashesOrRefusesAnEntry) {
  const Logging logging(GetParam());
  EXPECT_EQ(statuses_of_runs(logging, runs()), (std::map<int, int>{{0, runs()}}));
}

TEST_P(ExitWhileThreadsLog, Traced_NoneCrashesOrRefusesAnEntry) {
  const Logging logging(GetParam());
  const DebugLogFile log(3);
  EXPECT_EQ(statuses_of_runs(logging, runs() / 4), (std::map<int, int>{{0, runs() / 4}}));
}

INSTANTIATE_TEST_SUITE_P(Paths, ExitWhileThreadsLog, testing::Values(Path::kNarrow, Path::kIcu, Path::kCatalog),
                         name_of_path);

}  // namespace
}  // namespace qz_test
