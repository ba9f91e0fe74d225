#include <gtest/gtest.h>

#include <functional>

#include "tests/counter/indexed_counter.h"
#include "tests/support/resource_limit.h"

namespace {

using namespace qz_test;

class IndexedFaults : public IndexedCounter {
 protected:
  void replace_descriptor(int mode) {
    const int other = ::open(path().c_str(), mode | O_CLOEXEC);
    ASSERT_EQ(dup2(other, fileno(counter_.GetFilePointer())), fileno(counter_.GetFilePointer()));
    close(other);
  }
};

TEST_F(IndexedFaults, ReadFails_MinusOneAndSeekErrorRecord) {
  const std::function<int()> operations[] = {
      [&] { return increase(70); }, [&] { return increase(70, 2); }, [&] { return update(71); },
      [&] { return remove(72); },   [&] { return remove(7070); },    [&] { return add(70); },
  };
  for (const std::string& tail : {std::string(), free_record()}) {
    for (const auto& operation : operations) {
      open_indexed(numbered(0, 199) + tail);
      replace_descriptor(O_WRONLY);
      const DebugLogFile log(1);
      EXPECT_EQ(operation(), -1);
      EXPECT_EQ(log.unnumbered_records(), Texts({"logentrycounter:# Seek error!\n"}));
      EXPECT_TRUE(holds(numbered(0, 199) + tail));
    }
  }
}

TEST_F(IndexedFaults, WriteFails_MinusOneAndStreamAtTheRecord) {
  open_indexed(numbered(0, 199));
  replace_descriptor(O_RDONLY);
  for (int i = 0; i < 3; ++i) {
    const DebugLogFile log(1);
    EXPECT_EQ(increase(70), -1);
    EXPECT_EQ(ftell(counter_.GetFilePointer()), 70 * 32);
    EXPECT_EQ(increase(70, 2), -1);
    EXPECT_EQ(ftell(counter_.GetFilePointer()), 200 * 32);
    EXPECT_EQ(remove(7070), 0);
    EXPECT_EQ(ftell(counter_.GetFilePointer()), 200 * 32);
    EXPECT_EQ(log.unnumbered_records(), Texts({"logentrycounter:# Seek error!\n", "logentrycounter:# Seek error!\n"}));
    EXPECT_TRUE(holds(numbered(0, 199)));
  }
}

TEST_F(IndexedFaults, DiskFullAtEveryByte_FormerRecordThereAndTheNextOneCounts) {
  for (std::size_t limit = 70 * kRecordBytes; limit < 71 * kRecordBytes; ++limit) {
    SCOPED_TRACE(limit);
    open_indexed(numbered(0, 199));
    {
      const ResourceLimit disk(RLIMIT_FSIZE, limit);
      EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 70), -1);
      EXPECT_EQ(counter_.IncreaseCount(2020, 1, 2, 70), -1);
    }
    EXPECT_TRUE(holds(numbered(0, 199)));
    EXPECT_EQ(increase(70), 0);
    EXPECT_EQ(increase(70, 2), 0);
    EXPECT_EQ(increase(5, 2), 0);
    EXPECT_TRUE(same_as_model());
  }
}

TEST_F(IndexedFaults, AnyAllocationFails_SameResults) {
  const std::string start = numbered(0, 179) + free_record() + numbered(181, 182);
  for (const auto reach : {AllocationFailure::kOnce, AllocationFailure::kFromThenOn}) {
    unsigned nth = 1;
    for (bool happened = true; happened; ++nth) {
      SCOPED_TRACE(nth);
      write(start);
      open();
      int failures = 0;
      {
        const AllocationFailure failure(nth, reach);
        for (int i = 0; i < 200; ++i) {
          failures -= counter_.IncreaseCount(2020, 1, 3, i % 150);
          failures -= counter_.DeleteEntryElement(2020, 1, 1, i);
        }
        happened = failure.happened();
      }
      EXPECT_EQ(failures, 0);
      model_file_ = start;
      model_.open(&model_file_, true);
      for (int i = 0; i < 200; ++i) {
        model_.increase(2020, 1, 3, i % 150);
        model_.remove(2020, 1, 1, i);
      }
      EXPECT_TRUE(same_as_model());
    }
    EXPECT_GT(nth, 5U);
  }
}

}  // namespace
