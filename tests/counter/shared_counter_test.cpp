#include "qzlog/shared_counter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <csignal>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "counter/record_format.h"
#include "foundation/descriptor.h"
#include "tests/counter/counter_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/resource_limit.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/support/support.h"
#include "tests/support/working_folder.h"

namespace qz_test {
namespace {

/// Date and key to count, of what is not free. Two records of one combination are a failure.
using Counts = std::map<std::tuple<int, int, int, int>, unsigned>;

Counts counts_of(const std::string& bytes) {
  Counts counts;
  for (std::size_t at = 0; at + kRecordBytes <= bytes.size(); at += kRecordBytes) {
    const qzlog::CounterRecord record = qzlog::decode_record(reinterpret_cast<const unsigned char*>(bytes.data()) + at);
    if (qzlog::is_free_record(record)) continue;
    const bool is_first = counts
                              .emplace(std::tuple(record.year, record.month, record.day, record.entry_key),
                                       static_cast<unsigned>(record.count))
                              .second;
    EXPECT_TRUE(is_first) << "key " << record.entry_key << " stands in the file twice";
  }
  return counts;
}

class SharedCounter : public CounterTest {
 protected:
  std::unique_ptr<qz_LOG_SharedCounter> shared() const {
    return std::make_unique<qz_LOG_SharedCounter>(folder_.path().c_str(), "days");
  }
  Counts counts() const { return counts_of(read()); }
  std::string thrown_by_opening(const char* name) const {
    return thrown_by([&] { qz_LOG_SharedCounter(folder_.path().c_str(), name); });
  }
  std::string failed(const std::string& text) const { return thrown<QZX_logging_file_operation_failed>(text); }
};

TEST_F(SharedCounter, NewFile_HoldsWhatIsCountedAtOnce) {
  const auto counter = shared();
  EXPECT_EQ(counter->GetPath(), path());
  EXPECT_EQ(read(), "");
  counter->Increase(2026, 11, 23, 7);
  EXPECT_TRUE(holds(record_bytes(2026, 11, 23, 7, 1)));
  counter->Increase(2026, 11, 23, 7, 40);
  counter->Increase(2026, 11, 24, 7);
  counter->Increase(2026, 11, 24, -1, 2);
  EXPECT_TRUE(
      holds(record_bytes(2026, 11, 23, 7, 41) + record_bytes(2026, 11, 24, 7, 1) + record_bytes(2026, 11, 24, -1, 2)));
}

TEST_F(SharedCounter, FileOfTheOtherClass_GoesOn) {
  open();
  counter_.IncreaseCount(2026, 11, 23, 1);
  counter_.IncreaseCount(2026, 11, 23, 2);
  counter_.DeleteEntryElement(2026, 11, 23, 1);
  const auto counter = shared();
  counter->Increase(2026, 11, 23, 2);
  counter->Increase(2026, 11, 23, 3);
  EXPECT_TRUE(holds(record_bytes(2026, 11, 23, 3, 1) + record_bytes(2026, 11, 23, 2, 2)));
  EXPECT_EQ(counter_.UpdateEntryCount(2026, 11, 23, 3, 10), 0);
  counter->Increase(2026, 11, 23, 3);
  EXPECT_EQ(counts(), (Counts{{{2026, 11, 23, 2}, 2}, {{2026, 11, 23, 3}, 11}}));
}

TEST_F(SharedCounter, Today_OnTheLocalClock) {
  const TimeZone zone("XYZ-13");
  const auto counter = shared();
  qz_Time before = qz_Time::now();
  counter->IncreaseToday(7, 3);
  qz_Time after = qz_Time::now();
  before.GMT_to_local();
  after.GMT_to_local();
  const Counts found = counts();
  EXPECT_TRUE(found == (Counts{{{before.get_year(), before.get_month(), before.get_day(), 7}, 3}}) ||
              found == (Counts{{{after.get_year(), after.get_month(), after.get_day(), 7}, 3}}));
}

TEST_F(SharedCounter, CountAtItsEnd_GoesOnFromZero) {
  write(record_bytes(2026, 11, 23, 7, -1));
  shared()->Increase(2026, 11, 23, 7, 3);
  EXPECT_EQ(counts(), (Counts{{{2026, 11, 23, 7}, 2}}));
}

TEST_F(SharedCounter, NoTimes_ChangeNothing) {
  shared()->Increase(2026, 11, 23, 7, 0);
  EXPECT_EQ(read(), "");
}

TEST_F(SharedCounter, WhatIsNoDay_IsRefused) {
  const auto counter = shared();
  struct {
    int year;
    int month;
    int day;
  } const days[] = {{0, 1, 1},       {10000, 1, 1}, {-1, 1, 1},        {2026, 0, 1},  {2026, 13, 1},
                    {2026, 1, 0},    {2026, 1, 32}, {2026, 2, 29},     {2026, 4, 31}, {2026, -255, 1},
                    {2026, 1, -255}, {0, 0, 0},     {2026, 1, INT_MIN}};
  for (const auto& day : days) {
    EXPECT_EQ(thrown_by([&] { counter->Increase(day.year, day.month, day.day, 7); }),
              thrown<QZX_logging_illegal_argument>("invalid argument: no day of the years 1 to 9999"));
  }
  EXPECT_EQ(read(), "");
  counter->Increase(2024, 2, 29, 7);
  counter->Increase(1, 1, 1, 7);
  counter->Increase(9999, 12, 31, 7);
  EXPECT_EQ(counts().size(), 3U);
}

TEST_F(SharedCounter, WhatCannotBeOpened_SaysWhyWithItsPath) {
  EXPECT_EQ(thrown_by([] { qz_LOG_SharedCounter(nullptr, "days"); }),
            thrown<QZX_logging_illegal_argument>("invalid argument"));
  EXPECT_EQ(thrown_by([] { qz_LOG_SharedCounter("/tmp", nullptr); }),
            thrown<QZX_logging_illegal_argument>("invalid argument"));
  EXPECT_EQ(thrown_by_opening("no/folder"),
            failed("cannot open '" + folder_.path("no/folder.cnt") + "': No such file or directory"));
  ASSERT_EQ(mkfifo(folder_.path("pipe.cnt").c_str(), 0600), 0);
  EXPECT_EQ(thrown_by_opening("pipe"), failed("cannot open '" + folder_.path("pipe.cnt") + "': Invalid argument"));
  write("");
  const ReadOnlyFile read_only(path());
  if (!read_only.holds()) GTEST_SKIP() << "the superuser may write to every file";
  EXPECT_EQ(thrown_by_opening("days"), failed("cannot open '" + path() + "': Permission denied"));
}

TEST_F(SharedCounter, FullDisk_NothingIsCountedAndTheReasonTold) {
  const std::string first = record_bytes(2026, 11, 23, 1, 1);
  write(first);
  const auto counter = shared();
  {
    const ResourceLimit limit(RLIMIT_FSIZE, kRecordBytes + 10);
    EXPECT_NE(thrown_by([&] { counter->Increase(2026, 11, 23, 2); }).find("\"cannot write to '" + path() + "': "),
              std::string::npos);
    EXPECT_TRUE(holds(first));
    counter->Increase(2026, 11, 23, 1);
  }
  counter->Increase(2026, 11, 23, 2);
  EXPECT_EQ(counts(), (Counts{{{2026, 11, 23, 1}, 2}, {{2026, 11, 23, 2}, 1}}));
}

TEST_F(SharedCounter, RemovedAndReplacedFiles_AreLetGoOf) {
  const auto counter = shared();
  counter->Increase(2026, 11, 23, 1);
  ASSERT_EQ(remove(path().c_str()), 0);
  counter->Increase(2026, 11, 23, 2);
  EXPECT_EQ(counts(), (Counts{{{2026, 11, 23, 2}, 1}}));
  const std::string other = folder_.write("other", record_bytes(2026, 11, 23, 3, 5));
  ASSERT_EQ(rename(other.c_str(), path().c_str()), 0);
  counter->Increase(2026, 11, 23, 3);
  EXPECT_EQ(counts(), (Counts{{{2026, 11, 23, 3}, 6}}));
}

TEST_F(SharedCounter, WorkingDirectoryChanged_SameFile) {
  const WorkingFolder folder(folder_.path());
  qz_LOG_SharedCounter counter(".", "days");
  const WorkingFolder other("/");
  counter.Increase(2026, 11, 23, 1);
  EXPECT_EQ(counts(), (Counts{{{2026, 11, 23, 1}, 1}}));
}

TEST_F(SharedCounter, LockOfAnother_IsWaitedFor) {
  const auto counter = shared();
  const qzlog::Descriptor other(::open(path().c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(flock(other.get(), LOCK_EX), 0);
  ChildProcess child([&] {
    counter->Increase(2026, 11, 23, 1);
    return 0;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(read(), "");
  ASSERT_EQ(flock(other.get(), LOCK_UN), 0);
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(counts(), (Counts{{{2026, 11, 23, 1}, 1}}));
}

/// Random counts and deletions of several counters of one process, against a map.
TEST_F(SharedCounter, RandomOperationsOfSeveral_AsAMap) {
  SeededRandom random;
  Counts expected;
  std::unique_ptr<qz_LOG_SharedCounter> counters[] = {shared(), shared(), shared()};
  open();
  for (int i = 0; i < rounds(20000); ++i) {
    const int day = static_cast<int>(random.between(1, 28));
    const int key = static_cast<int>(random.between(1, 40));
    const std::tuple combination(2026, 11, day, key);
    if (random.one_in(10)) {
      counter_.DeleteEntryElement(2026, 11, day, key);
      expected.erase(combination);
    } else {
      const auto times = static_cast<unsigned>(random.between(1, 3));
      counters[random.below(std::size(counters))]->Increase(2026, 11, day, key, times);
      expected[combination] += times;
    }
  }
  EXPECT_EQ(counts(), expected);
}

TEST_F(SharedCounter, ProcessesThatAreForked_LoseNoCount) {
  constexpr int kChildren = 4;
  const int times = rounds(2000);
  const auto counter = shared();
  counter->Increase(2026, 11, 23, 0);
  std::vector<std::unique_ptr<ChildProcess>> children;
  for (int child = 0; child < kChildren; ++child) {
    children.push_back(std::make_unique<ChildProcess>([&] {
      for (int i = 0; i < times; ++i) counter->Increase(2026, 11, 1 + i % 7, i % 50);
      return 0;
    }));
  }
  for (const auto& child : children) EXPECT_EQ(child->wait(), 0);
  unsigned sum = 0;
  for (const auto& [combination, count] : counts()) sum += count;
  EXPECT_EQ(sum, 1U + static_cast<unsigned>(kChildren * times));
}

TEST_F(SharedCounter, KilledProcess_LeavesWholeRecordsAndNoLock) {
  const auto counter = shared();
  for (int round = 0; round < rounds(24); ++round) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      for (int i = 0;; ++i) counter->Increase(2026, 11, 23, i % 300);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    counter->Increase(2026, 11, 23, 1);
    EXPECT_EQ(read().size() % kRecordBytes, 0U);
    counts();
  }
}

TEST_F(SharedCounter, NoMemory_IsToldAndNothingIsCounted) {
  EXPECT_GE(FailEveryAllocation([&] { qz_LOG_SharedCounter(folder_.path().c_str(), "days"); }), 2U);
  const auto counter = shared();
  for (int key = 0; key < 400; ++key) counter->Increase(2026, 11, 23, key);
  {
    const MemoryOutage outage;
    counter->Increase(2026, 11, 23, 7);
  }
  EXPECT_EQ(counts()[std::tuple(2026, 11, 23, 7)], 2U);
}

}  // namespace
}  // namespace qz_test
