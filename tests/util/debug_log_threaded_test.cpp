#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <latch>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "qzlog/debug_log.h"
#include "tests/support/support.h"

namespace {

using qz_test::DebugLogFile;
using qz_test::Texts;

constexpr int kWriters = 6;
constexpr int kRecords = 100;

std::string record(int writer, int number) {
  return "writer " + std::to_string(writer) + " record " + std::to_string(number) + "\n";
}

Texts all_records_sorted() {
  Texts records;
  for (int writer = 0; writer < kWriters; ++writer) {
    for (int number = 0; number < kRecords; ++number) records.push_back(record(writer, number));
  }
  std::sort(records.begin(), records.end());
  return records;
}

template <typename Function>
void run_together(Function function) {
  std::latch start(kWriters);
  std::vector<std::thread> threads;
  for (int writer = 0; writer < kWriters; ++writer) {
    threads.emplace_back([&, writer] {
      start.arrive_and_wait();
      function(writer);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// A short record leaves the process in one piece, so that none is lost or torn.
TEST(LogDebugMessageThreads, ManyThreads_EveryRecordArrivesWhole) {
  const DebugLogFile log(3);
  run_together([](int writer) {
    for (int number = 0; number < kRecords; ++number) {
      LogDebugMessage(3, "writer %d record %d\n", writer, number);
    }
  });
  Texts records = log.records();
  std::sort(records.begin(), records.end());
  EXPECT_EQ(records, all_records_sorted());
}

TEST(LogDebugMessageThreads, RecordsOfOneThread_StayInOrder) {
  const DebugLogFile log(3);
  run_together([](int writer) {
    for (int number = 0; number < kRecords; ++number) LogDebugMessage(1, "%d:%d\n", writer, number);
  });
  std::vector<int> next(kWriters, 0);
  for (const std::string& text : log.records()) {
    const auto writer = static_cast<std::size_t>(std::stoi(text));
    EXPECT_EQ(std::stoi(text.substr(text.find(':') + 1)), next.at(writer)++);
  }
  EXPECT_EQ(next, std::vector<int>(kWriters, kRecords));
}

TEST(LogDebugMessageThreads, EveryThread_NamesItself) {
  const DebugLogFile log(1);
  std::latch all_written(kWriters);
  run_together([&](int) {
    LogDebugMessage(1, "%d\n", static_cast<int>(pthread_self()));
    all_written.arrive_and_wait();  // alive together, so that no thread value is used twice
  });
  const std::string text = log.text();
  std::set<long> threads;
  for (std::size_t position = 0; position < text.size();) {
    const auto prefix = qz_test::parse_record_prefix(text, position);
    ASSERT_TRUE(prefix) << text.substr(position);
    EXPECT_EQ(prefix->tid, std::stol(text.substr(prefix->end)));
    threads.insert(prefix->tid);
    position = text.find('\n', position) + 1;
  }
  EXPECT_EQ(threads.size(), static_cast<std::size_t>(kWriters));
}

TEST(DebugLogLevelThreads, ChangedWhileRecordsAreWritten_IsNoRace) {
  const DebugLogFile log(1);
  run_together([](int writer) {
    for (int number = 0; number < kRecords; ++number) {
      if (writer == 0) EnableDebugLog(number % 2);
      LogDebugMessage(1, "text\n");
      if (GetDebugLogLevel() > 1) LogDebugMessage(9, "wrong level\n");
    }
  });
  for (const std::string& text : log.records()) EXPECT_EQ(text, "text\n");
}

TEST(LogDebugMessageProcesses, SeveralProcesses_ShareTheFile) {
  const DebugLogFile log(1);
  std::vector<pid_t> children;
  for (int writer = 0; writer < kWriters; ++writer) {
    const pid_t child = fork();
    if (child == 0) {
      for (int number = 0; number < kRecords; ++number) {
        LogDebugMessage(1, "writer %d record %d\n", writer, number);
      }
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  Texts bodies;
  const std::string text = log.text();
  for (std::size_t position = 0; position < text.size();) {
    const auto prefix = qz_test::parse_record_prefix(text, position);
    ASSERT_TRUE(prefix) << text.substr(position, 100);
    EXPECT_EQ(std::count(children.begin(), children.end(), prefix->pid), 1);
    position = text.find('\n', position) + 1;
    bodies.push_back(text.substr(prefix->end, position - prefix->end));
  }
  std::sort(bodies.begin(), bodies.end());
  EXPECT_EQ(bodies, all_records_sorted());
}

}  // namespace
