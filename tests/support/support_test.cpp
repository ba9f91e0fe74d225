#include "tests/support/support.h"

#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <set>
#include <stdexcept>
#include <string>

#include "qzlog/debug_log.h"
#include "tests/support/resource_limit.h"
#include "tests/support/signal_action.h"
#include "tests/support/working_folder.h"

namespace qz_test {
namespace {

TEST(ThrownBy, OurException_ClassItselfAndText) {
  EXPECT_EQ(thrown_by([] { throw QZX_logging_misc("text"); }), "QZX_logging_misc \"text\"");
  EXPECT_EQ(thrown_by([] { throw QZX_index_out_of_bounds(); }), "QZX_index_out_of_bounds (null)");
  EXPECT_EQ(thrown_by([] { throw QZX_runtime("text\n", 7); }), "QZX_runtime \"text\n\" code 7");
}

TEST(ThrownBy, ForeignOrNoException_ItsClassOrNothing) {
  EXPECT_EQ(thrown_by([] { throw std::runtime_error("text"); }), "std::runtime_error");
  EXPECT_EQ(thrown_by([] {}), "nothing");
}

TEST(Thrown, ClassAndText_AsThrownBySaysThem) {
  EXPECT_EQ(thrown<QZX_logging_misc>("text"), "QZX_logging_misc \"text\"");
  EXPECT_EQ(thrown<QZX_runtime>(nullptr), "QZX_runtime (null)");
  EXPECT_EQ(thrown_by([] { throw QZX_memory_alloc(); }), kNoMemory);
}

// Calls of the function itself: a new expression whose memory is not used may be optimised away.
bool can_allocate() {
  void* memory = ::operator new(64, std::nothrow);
  ::operator delete(memory);
  return memory != nullptr;
}

std::string results_of_three_allocations(AllocationFailure::Reach reach) {
  bool results[3];
  {
    const AllocationFailure failure(2, reach);
    for (bool& result : results) result = can_allocate();
  }
  std::string marks;
  for (const bool result : results) marks += result ? '+' : '-';
  return marks;
}

TEST(AllocationFailure, NthAllocation_FailsOnceOrFromThenOn) {
  EXPECT_EQ(results_of_three_allocations(AllocationFailure::kOnce), "+-+");
  EXPECT_EQ(results_of_three_allocations(AllocationFailure::kFromThenOn), "+--");
}

TEST(AllocationFailure, StrdupAndThrowingNew_FailTheirWay) {
  char* copy = nullptr;
  bool bad_alloc = false;
  {
    const AllocationFailure failure(1, AllocationFailure::kFromThenOn);
    copy = strdup("text");
    try {
      ::operator delete(::operator new(64));
    } catch (const std::bad_alloc&) {
      bad_alloc = true;
    }
  }
  EXPECT_EQ(copy, nullptr);
  EXPECT_TRUE(bad_alloc);
  copy = strdup("text");
  EXPECT_STREQ(copy, "text");
  free(copy);
}

TEST(FailEveryAllocation, ThreeAllocations_ThreeFailingRuns) {
  int checks = 0;
  const auto use = [] {
    for (int i = 0; i < 3; ++i) {
      if (!can_allocate()) throw QZX_memory_alloc();
    }
  };
  EXPECT_EQ(FailEveryAllocation(use, [&] { ++checks; }), 3U);
  EXPECT_EQ(checks, 3);
}

TEST(TempDir, Lifetime_FolderExistsUntilTheEnd) {
  std::string path;
  {
    const TempDir folder;
    path = folder.path();
    folder.write("name", std::string("a\0b", 3));
    EXPECT_EQ(folder.read("name"), std::string("a\0b", 3));
    EXPECT_TRUE(folder.has("name"));
    EXPECT_FALSE(folder.has("other"));
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(DebugLogFile, Records_PrefixCutOffAndLineBreaksKept) {
  const DebugLogFile log(3);
  EXPECT_FALSE(log.exists());
  LogDebugMessage(1, "%s:%d first\nsecond line\n", "unit", 12);
  LogDebugMessage(1, "%s:%d without end", "unit", 345);
  LogDebugMessage(1, "last");
  EXPECT_EQ(log.records(), Texts({"unit:12 first\nsecond line\n", "unit:345 without end", "last"}));
  EXPECT_EQ(log.unnumbered_records(), Texts({"unit:# first\nsecond line\n", "unit:# without end", "last"}));
  log.clear();
  EXPECT_EQ(log.records(), Texts());
}

TEST(DebugLogFile, End_RestoresLevelAndWorkingDirectory) {
  const auto directory = std::filesystem::current_path();
  const unsigned level = GetDebugLogLevel();
  {
    const DebugLogFile log(7);
    EXPECT_EQ(GetDebugLogLevel(), 7U);
    EXPECT_NE(std::filesystem::current_path(), directory);
  }
  EXPECT_EQ(GetDebugLogLevel(), level);
  EXPECT_EQ(std::filesystem::current_path(), directory);
}

TEST(ParseRecordPrefix, DamagedPrefixes_NotRecognised) {
  const std::string whole = "2026/11/21 08:15:30(pid=12)(tid=-34):";
  const auto prefix = parse_record_prefix("x" + whole + "y", 1);
  ASSERT_TRUE(prefix);
  EXPECT_EQ(prefix->time, "2026/11/21 08:15:30");
  EXPECT_EQ(prefix->pid, 12);
  EXPECT_EQ(prefix->tid, -34);
  EXPECT_EQ(prefix->end, whole.size() + 1);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(parse_record_prefix(whole.substr(0, length), 0)) << length;
  }
}

TEST(SetEnv, End_RestoresThePreviousState) {
  const UnsetEnv unset("QZLOG_TEST_VARIABLE");
  {
    const SetEnv outer("QZLOG_TEST_VARIABLE", "1");
    const SetEnv inner("QZLOG_TEST_VARIABLE", "2");
    EXPECT_STREQ(getenv("QZLOG_TEST_VARIABLE"), "2");
  }
  EXPECT_EQ(getenv("QZLOG_TEST_VARIABLE"), nullptr);
}

TEST(WorkingFolder, End_RestoresTheDirectory) {
  const auto directory = std::filesystem::current_path();
  const TempDir folder;
  {
    const WorkingFolder working_folder(folder.path());
    EXPECT_TRUE(std::filesystem::equivalent(".", folder.path()));
    std::filesystem::current_path("/");
  }
  EXPECT_EQ(std::filesystem::current_path(), directory);
}

TEST(SignalAction, End_RestoresTheAction) {
  const SignalAction outer(SIGUSR1, SIG_IGN);
  {
    const SignalAction inner(SIGUSR1, SIG_DFL);
    EXPECT_EQ(signal(SIGUSR1, SIG_DFL), SIG_DFL);
  }
  EXPECT_EQ(signal(SIGUSR1, SIG_IGN), SIG_IGN);
}

TEST(ResourceLimit, FileSize_WritingBeyondFailsUntilTheEnd) {
  const TempDir folder;
  const int file = open(folder.write("file", "").c_str(), O_WRONLY | O_CLOEXEC);
  ssize_t written = 0;
  int error = 0;
  {
    const ResourceLimit disk(RLIMIT_FSIZE, 2);
    written = pwrite(file, "abc", 3, 0);
    if (pwrite(file, "c", 1, 2) == -1) error = errno;
  }
  EXPECT_EQ(written, 2);
  EXPECT_EQ(error, EFBIG);
  EXPECT_EQ(pwrite(file, "c", 1, 2), 1);
  close(file);
}

TEST(DescriptorLimit, TwoToSpare_ThirdFails) {
  int descriptors[3] = {};
  {
    const DescriptorLimit limit(2);
    for (int& descriptor : descriptors) descriptor = dup(STDOUT_FILENO);
  }
  EXPECT_GE(descriptors[0], 0);
  EXPECT_GE(descriptors[1], 0);
  EXPECT_EQ(descriptors[2], -1);
  close(descriptors[0]);
  close(descriptors[1]);
}

TEST(TimeZone, Lifetime_LocalTimeFollows) {
  const time_t epoch = 0;
  tm local = {};
  const TimeZone outer("UTC");
  {
    const TimeZone inner("Asia/Kathmandu");
    ASSERT_NE(localtime_r(&epoch, &local), nullptr);
    EXPECT_EQ(local.tm_gmtoff, 19800);
  }
  ASSERT_NE(localtime_r(&epoch, &local), nullptr);
  EXPECT_EQ(local.tm_gmtoff, 0);
}

TEST(SeededRandom, NoSeedGiven_SameNumbersInTheSameTest) {
  const UnsetEnv seed("QZLOG_TEST_SEED");
  SeededRandom first;
  SeededRandom second;
  EXPECT_EQ(first.seed(), 4157945556U);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(first.between(-9, 9), second.between(-9, 9));
}

TEST(SeededRandom, SeedGiven_ItsNumbers) {
  const SetEnv seed("QZLOG_TEST_SEED", "42");
  SeededRandom random;
  RandomNumbers same(42);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(random.below(1000), same.below(1000));
}

TEST(SeededRandom, Failure_SaysTheSeed) {
  const SetEnv seed("QZLOG_TEST_SEED", "42");
  const SeededRandom random;
  EXPECT_NONFATAL_FAILURE(ADD_FAILURE() << "text", "QZLOG_TEST_SEED=42");
}

TEST(RandomNumbers, Below_ReachesEveryNumberAndNoOther) {
  SeededRandom random;
  std::set<std::size_t> seen;
  for (int i = 0; i < 1000; ++i) seen.insert(random.below(4));
  EXPECT_EQ(seen, (std::set<std::size_t>{0, 1, 2, 3}));
}

}  // namespace
}  // namespace qz_test
