#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "qzlog/shared_counter.h"
#include "tests/support/child_process.h"
#include "tests/tools/command_fixture.h"

namespace {

using qz_test::ChildProcess;
using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;

constexpr int kThreads = 4;
constexpr int kRounds = 500;
constexpr int kDays = 3;
constexpr int kKeys = 5;
constexpr int kCommands = 20;

/// Day of November 2026 and key to count.
using Counts = std::map<std::pair<int, int>, int>;

constexpr const char* kDefinitions = R"yaml(
version: "1.0"
globals:
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
entries:
  - {id: 1, name: ONE, message: "one"}
)yaml";

/// What one thread counts, with `qz_LOG_SharedCounter` or in a model.
template <class Count>
void for_each_count(int thread, const Count& count) {
  for (int round = 0; round < kRounds; ++round) count(1 + (thread + round) % kDays, 1 + round % kKeys);
}

int count_with_threads(const std::string& folder) {
  qz_LOG_SharedCounter counter(folder.c_str(), "events");
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&counter, thread] {
      for_each_count(thread, [&](int day, int key) { counter.Increase(2026, 11, day, key); });
    });
  }
  for (std::thread& thread : threads) thread.join();
  return 0;
}

/// A shared counter and the command on one file.
class CountShared : public CommandFixture {
 protected:
  CountShared() {
    write("d.yaml", kDefinitions);
    std::string entries;
    for (int day = 1; day <= kDays; ++day) {
      entries += R"({"id":1,"time":"2026-11-0)" + std::to_string(day) + "T12:00:00Z\"}\n";
    }
    write("e.jsonl", entries);
  }

  /// Lets the command count in each of its ways, a render of every day among them.
  void count_with_commands(Counts& model) const {
    for (int i = 0; i < kCommands; ++i) {
      const CommandResult result =
          run("$QZLOG count add events --date 2026-11-01 --key 2 &&"
              " $QZLOG render --definitions d.yaml --count events e.jsonl");
      EXPECT_EQ(result.err, "");
      EXPECT_EQ(result.status, 0);
      ++model[{1, 2}];
      for (int day = 1; day <= kDays; ++day) ++model[{day, 1}];
    }
  }

  std::string shown() const { return run("$QZLOG count show events | grep '^2026' | grep -v total | tr -s ' '").out; }
};

std::string lines_of(const Counts& counts) {
  std::string lines;
  for (const auto& [day_and_key, count] : counts) {
    lines += "2026-11-0" + std::to_string(day_and_key.first) + " " + std::to_string(day_and_key.second) + " " +
             std::to_string(count) + "\n";
  }
  return lines;
}

TEST_F(CountShared, ThreadsProcessesAndCommandsAtOnce_EachCountIsShownOnce) {
  Counts model;
  {
    ChildProcess first([this] { return count_with_threads(folder_.path()); });
    ChildProcess second([this] { return count_with_threads(folder_.path()); });
    count_with_commands(model);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
  }
  for (int process = 0; process < 2; ++process) {
    for (int thread = 0; thread < kThreads; ++thread) {
      for_each_count(thread, [&](int day, int key) { ++model[{day, key}]; });
    }
  }
  EXPECT_EQ(shown(), lines_of(model));
}

// An open counter follows what the command does to its file: it counts on in records that the command wrote or freed.
TEST_F(CountShared, CommandSetsAndDeletes_TheOpenCounterGoesOnFromThere) {
  qz_LOG_SharedCounter counter(folder_.path().c_str(), "events");
  counter.Increase(2026, 11, 1, 7);
  counter.Increase(2026, 11, 2, 7);
  EXPECT_EQ(run("$QZLOG count set events --date 2026-11-01 --key 7 --count 40").status, 0);
  EXPECT_EQ(run("$QZLOG count delete events --date 2026-11-02 --key 7").status, 0);
  counter.Increase(2026, 11, 1, 7, 2);
  counter.Increase(2026, 11, 2, 7);
  counter.Increase(2026, 11, 3, -1);
  EXPECT_EQ(shown(), "2026-11-01 7 42\n2026-11-02 7 1\n2026-11-03 -1 1\n");
}

}  // namespace
