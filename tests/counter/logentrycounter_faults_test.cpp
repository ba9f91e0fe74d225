#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <functional>
#include <memory>

#include "qzlog/logentrycounter.h"
#include "tests/counter/counter_fixture.h"
#include "tests/support/call_failure.h"
#include "tests/support/resource_limit.h"

namespace {

using namespace qz_test;

using Counter = _qz_LOG_EntryCounter;

/// An operation and what it makes of a file of four records with the keys 0 to 3, the one with the key 2 being its
/// target (32 bytes from 64 on).
struct Rewrite {
  const char* name;
  std::function<void(Counter&)> prepare;
  std::function<int(Counter&)> operation;
  std::string former;
  std::string result;
};

int add_a_record(Counter& counter) {
  _qz_LOG_EntryCounterElement element = {32, 2021, 5, 6, 9, 4, {0, 0}};
  return counter.addElement(&element);
}

std::vector<Rewrite> rewrites() {
  const auto nothing = [](Counter&) {};
  const std::string one = record_bytes(2020, 1, 1, 2, 1);
  const std::string two = record_bytes(2020, 1, 1, 2, 2);
  return {
      {"IncreaseCount", nothing, [](Counter& counter) { return counter.IncreaseCount(2020, 1, 1, 2); }, one, two},
      {"IncreaseCount, fast path", [](Counter& counter) { counter.IncreaseCount(2020, 1, 1, 2); },
       [](Counter& counter) { return counter.IncreaseCount(2020, 1, 1, 2); }, two, record_bytes(2020, 1, 1, 2, 3)},
      {"UpdateEntryCount", nothing, [](Counter& counter) { return counter.UpdateEntryCount(2020, 1, 1, 2, -2); }, one,
       record_bytes(2020, 1, 1, 2, -2)},
      {"DeleteEntryElement", nothing, [](Counter& counter) { return counter.DeleteEntryElement(2020, 1, 1, 2); }, one,
       free_record()},
      {"addElement to a free record", [](Counter& counter) { counter.DeleteEntryElement(2020, 1, 1, 2); }, add_a_record,
       free_record(), record_bytes(2021, 5, 6, 9, 4)},
  };
}

class FullDisk : public CounterTest {
 protected:
  static std::string numbered(int first, int last) {
    std::string bytes;
    for (int key = first; key <= last; ++key) bytes += record_bytes(2020, 1, 1, key, 1);
    return bytes;
  }
  void reopen(Counter& counter, const std::string& bytes) const {
    write(bytes);
    counter.OpenEntryCounterFile(folder_.path().c_str(), "days");
  }
};

TEST_F(FullDisk, RecordRewrittenAtEveryLimit_MinusOneAndTheFormerRecordThere) {
  for (const Rewrite& rewrite : rewrites()) {
    for (std::size_t limit = 0; limit < 96; ++limit) {
      SCOPED_TRACE(std::string(rewrite.name) + " at " + std::to_string(limit));
      Counter counter;
      reopen(counter, numbered(0, 3));
      rewrite.prepare(counter);
      int result = 0;
      {
        const ResourceLimit disk(RLIMIT_FSIZE, limit);
        result = rewrite.operation(counter);
      }
      EXPECT_EQ(result, -1);
      EXPECT_TRUE(holds(numbered(0, 1) + rewrite.former + numbered(3, 3)));
      EXPECT_EQ(rewrite.operation(counter), 0);
      EXPECT_TRUE(holds(numbered(0, 1) + rewrite.result + numbered(3, 3)));
    }
  }
}

TEST_F(FullDisk, RecordFitsExactly_Written) {
  for (const Rewrite& rewrite : rewrites()) {
    SCOPED_TRACE(rewrite.name);
    Counter counter;
    reopen(counter, numbered(0, 3));
    rewrite.prepare(counter);
    int result = -1;
    {
      const ResourceLimit disk(RLIMIT_FSIZE, 96);
      result = rewrite.operation(counter);
    }
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(holds(numbered(0, 1) + rewrite.result + numbered(3, 3)));
  }
}

// A range is freed record by record: what is freed before the limit stays freed, the others are whole.
TEST_F(FullDisk, RangeDeletedAtEveryLimit_EveryRecordOldOrFree) {
  const std::string free_one = free_record();
  for (std::size_t limit = 0; limit <= 128; ++limit) {
    SCOPED_TRACE(limit);
    Counter counter;
    reopen(counter, numbered(0, 3));
    int result = 0;
    {
      const ResourceLimit disk(RLIMIT_FSIZE, limit);
      result = counter.DeleteEntryElement(moment(2020, 1, 1), moment(2020, 1, 1));
    }
    EXPECT_EQ(result, limit == 128 ? 0 : -1);
    const int freed = static_cast<int>(limit / kRecordBytes);
    std::string expected;
    for (int i = 0; i < freed; ++i) expected += free_one;
    EXPECT_TRUE(holds(expected + numbered(freed, 3)));
  }
}

struct Append {
  const char* name;
  std::function<int(Counter&)> operation;
  std::string record;
};

TEST_F(FullDisk, RecordAppendedAtEveryLimit_CompleteRecordsStayAndTheNextOneRepairs) {
  const Append appends[] = {
      {"IncreaseCount", [](Counter& counter) { return counter.IncreaseCount(2021, 5, 6, 9); },
       record_bytes(2021, 5, 6, 9, 1)},
      {"UpdateEntryCount", [](Counter& counter) { return counter.UpdateEntryCount(2021, 5, 6, 9, 7); },
       record_bytes(2021, 5, 6, 9, 7)},
      {"addElement", add_a_record, record_bytes(2021, 5, 6, 9, 4)},
  };
  const std::string complete = numbered(0, 2);
  for (const Append& append : appends) {
    for (const std::size_t piece : {0U, 1U, 16U, 31U}) {
      for (std::size_t limit = 0; limit < complete.size() + kRecordBytes; ++limit) {
        SCOPED_TRACE(std::string(append.name) + " at " + std::to_string(limit) + " piece " + std::to_string(piece));
        Counter counter;
        reopen(counter, complete + numbered(3, 3).substr(0, piece));
        int result = 0;
        {
          const ResourceLimit disk(RLIMIT_FSIZE, limit);
          result = append.operation(counter);
        }
        EXPECT_EQ(result, -1);
        const std::string left = read();
        EXPECT_TRUE(same_records(left.substr(0, complete.size()), complete));
        EXPECT_LT(left.size(), complete.size() + kRecordBytes);
        EXPECT_EQ(append.operation(counter), 0);
        EXPECT_TRUE(holds(complete + append.record));
      }
    }
  }
}

TEST_F(FullDisk, AppendFailed_LengthIsAMultipleOfARecord) {
  for (std::size_t limit = 32; limit < 64; ++limit) {
    Counter counter;
    reopen(counter, numbered(0, 0));
    {
      const ResourceLimit disk(RLIMIT_FSIZE, limit);
      counter.IncreaseCount(2021, 5, 6, 9);
    }
    EXPECT_TRUE(holds(numbered(0, 0))) << limit;
  }
}

TEST_F(FullDisk, AppendFailed_OtherRecordsStillCount) {
  Counter counter;
  reopen(counter, numbered(0, 2));
  const ResourceLimit disk(RLIMIT_FSIZE, 100);
  EXPECT_EQ(counter.IncreaseCount(2021, 5, 6, 9), -1);
  EXPECT_EQ(counter.IncreaseCount(2020, 1, 1, 1), 0);
  EXPECT_EQ(counter.IncreaseCount(2021, 5, 6, 9), -1);
  EXPECT_EQ(counter.DeleteEntryElement(2020, 1, 1, 0), 0);
  EXPECT_EQ(counter.IncreaseCount(2021, 5, 6, 9), 0);
  EXPECT_TRUE(holds(record_bytes(2021, 5, 6, 9, 1) + record_bytes(2020, 1, 1, 1, 2) + record_bytes(2020, 1, 1, 2, 1)));
}

/// A file system of two pages.
class SmallDisk : public FullDisk {
 protected:
  static constexpr int kRoom = 2 * 4096 / 32;

  void SetUp() override {
    const char* const here = folder_.path().c_str();
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("none", here, "tmpfs", 0, "size=8192") != 0) {
      GTEST_SKIP() << "no file system can be mounted: " << std::strerror(errno);
    }
    mounted_ = true;
  }
  void TearDown() override {
    counter_.CloseEntryCounterFile();
    if (mounted_) umount2(folder_.path().c_str(), MNT_DETACH);
  }

 private:
  bool mounted_ = false;
};

TEST_F(SmallDisk, FilledToTheEnd_NothingLostAndFreedRecordsReused) {
  open();
  for (int key = 0; key < kRoom; ++key) ASSERT_EQ(counter_.IncreaseCount(2020, 1, 1, key), 0) << key;
  for (int key = kRoom; key < kRoom + 3; ++key) EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, key), -1);
  EXPECT_TRUE(holds(numbered(0, kRoom - 1)));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 5), 0);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 6, 77), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 7), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, kRoom), 0);
  EXPECT_TRUE(holds(numbered(0, 4) + record_bytes(2020, 1, 1, 5, 2) + record_bytes(2020, 1, 1, 6, 77) +
                    record_bytes(2020, 1, 1, kRoom, 1) + numbered(8, kRoom - 1)));
}

/// The stream's descriptor is replaced by one that can only be read, or only be written.
class BrokenDescriptor : public CounterTest {
 protected:
  void open_and_replace(const std::string& bytes, int mode) {
    open_with(bytes);
    const int other = ::open(path().c_str(), mode | O_CLOEXEC);
    ASSERT_EQ(dup2(other, fileno(counter_.GetFilePointer())), fileno(counter_.GetFilePointer()));
    close(other);
  }
};

class WriteFails : public BrokenDescriptor {};

TEST_F(WriteFails, RecordFound_MinusOneAndSeekErrorRecord) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 3);
  open_and_replace(bytes, O_RDONLY);
  const std::function<int()> operations[] = {
      [&] { return counter_.IncreaseCount(2020, 1, 1, 7); },
      [&] { return counter_.UpdateEntryCount(2020, 1, 1, 7, 5); },
      [&] { return counter_.DeleteEntryElement(2020, 1, 1, 7); },
  };
  for (const auto& operation : operations) {
    {
      const DebugLogFile log(1);
      EXPECT_EQ(operation(), -1);
      EXPECT_EQ(log.unnumbered_records(), Texts({"logentrycounter:# Seek error!\n"}));
    }
    const DebugLogFile log(0);
    EXPECT_EQ(operation(), -1);
    EXPECT_FALSE(log.exists());
  }
  EXPECT_TRUE(holds(bytes));
}

TEST_F(WriteFails, NewRecord_MinusOneAndFileUnchanged) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 3);
  open_and_replace(bytes, O_RDONLY);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 8), -1);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 8, 5), -1);
  EXPECT_EQ(add_a_record(counter_), -1);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 8), 0);
  EXPECT_TRUE(holds(bytes));
}

// What cannot be read is not known to be free, nor to be the end.
TEST_F(BrokenDescriptor, ReadFails_MinusOneAndNoRecordOverwritten) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 3) + record_bytes(2020, 1, 1, 8, 4);
  open_and_replace(bytes, O_WRONLY);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), -1);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 9), -1);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 8, 5), -1);
  EXPECT_EQ(add_a_record(counter_), -1);
  EXPECT_TRUE(holds(bytes));
}

/// Increments, makes, sets, frees, adds: each operation on a file of two records, with what it leaves.
struct Operation {
  const char* name;
  std::function<int(Counter&)> operation;
  std::string result;
};

std::vector<Operation> operations_on_two() {
  const std::string first = record_bytes(2020, 1, 1, 7, 3);
  const std::string second = record_bytes(2020, 1, 1, 8, 4);
  return {
      {"IncreaseCount", [](Counter& counter) { return counter.IncreaseCount(2020, 1, 1, 8); },
       first + record_bytes(2020, 1, 1, 8, 5)},
      {"IncreaseCount of a new one", [](Counter& counter) { return counter.IncreaseCount(2020, 1, 1, 9); },
       first + second + record_bytes(2020, 1, 1, 9, 1)},
      {"UpdateEntryCount", [](Counter& counter) { return counter.UpdateEntryCount(2020, 1, 1, 7, 6); },
       record_bytes(2020, 1, 1, 7, 6) + second},
      {"DeleteEntryElement", [](Counter& counter) { return counter.DeleteEntryElement(2020, 1, 1, 7); },
       free_record() + second},
      {"DeleteEntryElement of a range",
       [](Counter& counter) { return counter.DeleteEntryElement(moment(2020, 1, 1), moment(2020, 1, 1)); },
       free_record() + free_record()},
      {"addElement", add_a_record, first + second + record_bytes(2021, 5, 6, 9, 4)},
  };
}

TEST_F(FullDisk, SizeOfTheFileNotTold_MinusOneAndFileUnchanged) {
  const std::string before = record_bytes(2020, 1, 1, 7, 3) + record_bytes(2020, 1, 1, 8, 4);
  for (const Operation& row : operations_on_two()) {
    SCOPED_TRACE(row.name);
    Counter counter;
    reopen(counter, before);
    {
      const DebugLogFile log(1);
      const CallFailure failure(FileCall::kStatus, EIO);
      EXPECT_EQ(row.operation(counter), -1);
      EXPECT_EQ(log.unnumbered_records(), Texts({"logentrycounter:# Seek error!\n"}));
    }
    EXPECT_TRUE(holds(before));
    EXPECT_EQ(row.operation(counter), 0);
    EXPECT_TRUE(holds(row.result));
  }
}

// Each transfer of the operation is short once, and then all are, so that some writes are, too.
TEST_F(FullDisk, TransfersInPieces_DoneOrMinusOneAndFileUnchanged) {
  const std::string before = record_bytes(2020, 1, 1, 7, 3) + record_bytes(2020, 1, 1, 8, 4);
  for (const Operation& row : operations_on_two()) {
    for (const int in_part : {1, 2, ShortTransfers::kEvery}) {
      for (int whole = 0; whole < 4; ++whole) {
        SCOPED_TRACE(std::string(row.name) + " " + std::to_string(whole) + " " + std::to_string(in_part));
        Counter counter;
        reopen(counter, before);
        int result = 0;
        {
          const ShortTransfers pieces(whole, in_part);
          result = row.operation(counter);
        }
        if (result != 0) {
          EXPECT_EQ(result, -1);
          // A range is freed record by record: the first may be done.
          const bool first_freed = std::string(row.name) == "DeleteEntryElement of a range" && read() != before;
          EXPECT_TRUE(holds(first_freed ? free_record() + record_bytes(2020, 1, 1, 8, 4) : before));
          EXPECT_EQ(counter.OpenEntryCounterFile(folder_.path().c_str(), "days"), 0);
          EXPECT_EQ(row.operation(counter), 0);
        }
        EXPECT_TRUE(holds(row.result));
      }
    }
  }
}

TEST_F(BrokenDescriptor, CloseFails_ZeroAndErrnoTellsWhy) {
  open_with(record_bytes(2020, 1, 1, 7, 3));
  errno = 0;
  EXPECT_EQ(counter_.CloseEntryCounterFile(), 0);
  EXPECT_EQ(errno, 0);
  open();
  close(fileno(counter_.GetFilePointer()));
  EXPECT_EQ(counter_.CloseEntryCounterFile(), 0);
  EXPECT_EQ(errno, EBADF);
  EXPECT_FALSE(counter_.IsOpen());
}

/// A file of mostly nothing whose last records stand around the position that 32 bits no longer hold.
class BeyondTwoGigabytes : public CounterTest {
 protected:
  static constexpr off_t kLimit = 0x80000000LL;
  const std::string first_ = record_bytes(2020, 1, 1, 1, 10);   // the last position that fits
  const std::string second_ = record_bytes(2020, 1, 1, 2, 20);  // the first that does not

  void SetUp() override {
    write("");
    const int file = ::open(path().c_str(), O_RDWR | O_CLOEXEC);
    const std::string records = first_ + second_;
    const bool written = pwrite(file, records.data(), records.size(), kLimit - 32) == 64;
    close(file);
    if (!written) GTEST_SKIP() << "no file of this size can be made: " << std::strerror(errno);
    open();
  }
  testing::AssertionResult ends_with(const std::string& records) const {
    std::string found(96, '\0');
    const int file = ::open(path().c_str(), O_RDONLY | O_CLOEXEC);
    found.resize(static_cast<std::size_t>(pread(file, found.data(), found.size(), kLimit - 32)));
    close(file);
    return same_records(found, records);
  }
};

TEST_F(BeyondTwoGigabytes, IncreaseCount_LastPositionCountsTheNextIsRefused) {
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 1), 0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 1), 0);
  const std::string counted = record_bytes(2020, 1, 1, 1, 12);
  EXPECT_TRUE(ends_with(counted + second_));
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 2), -1);
  EXPECT_TRUE(ends_with(counted + second_));
}

TEST_F(BeyondTwoGigabytes, RangeDelete_FreesTheRecordsThere) {
  EXPECT_EQ(fseeko(counter_.GetFilePointer(), kLimit - 32, SEEK_SET), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(moment(2020, 1, 1), moment(2020, 1, 1)), 0);
  EXPECT_TRUE(ends_with(free_record() + free_record()));
}

TEST_F(BeyondTwoGigabytes, UpdateEntryCount_NeedsNo32BitPosition) {
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 2, 21), 0);
  EXPECT_TRUE(ends_with(first_ + record_bytes(2020, 1, 1, 2, 21)));
}

}  // namespace
