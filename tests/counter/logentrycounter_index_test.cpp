#include "counter/logentrycounter_index.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <utility>

#include "tests/counter/indexed_counter.h"

using namespace qzlog;

namespace {

using namespace qz_test;

class SearchCost : public IndexedCounter {
 protected:
  const std::pair<const char*, std::function<int(int)>> operations_[5] = {
      {"IncreaseCount", [&](int key) { return increase(key); }},
      {"IncreaseCount of a new combination", [&](int key) { return increase(key, 2); }},
      {"UpdateEntryCount", [&](int key) { return update(key); }},
      {"DeleteEntryElement", [&](int key) { return remove(key); }},
      {"addElement", [&](int key) { return add(key); }},
  };
};

TEST_F(SearchCost, AnyNumberOfRecords_OneRecordIsRead) {
  for (const int records : {128, 6000}) {
    for (const auto& [name, operation] : operations_) {
      SCOPED_TRACE(std::string(name) + " among " + std::to_string(records));
      open_indexed(numbered(0, records - 1));
      for (int i = 1; i <= 10; ++i) {
        const int key = records - 1 - i % 2 * 50 - i % 5;
        EXPECT_LE(read_by([&, &run = operation] { EXPECT_EQ(run(key), 0); }), kFewBytes);
      }
      EXPECT_TRUE(same_as_model());
    }
  }
}

TEST_F(SearchCost, FreedAndAddedInTurn_OneRecordIsRead) {
  open_indexed(numbered(0, 999));
  for (int i = 0; i < 100; ++i) {
    EXPECT_LE(read_by([&] { EXPECT_EQ(remove(i * 3), 0); }), kFewBytes);
    EXPECT_LE(read_by([&] { EXPECT_EQ(remove(i * 3 + 1), 0); }), kFewBytes);
    EXPECT_LE(read_by([&] { EXPECT_EQ(increase(i, 2), 0); }), kFewBytes);
  }
  EXPECT_TRUE(same_as_model());
}

TEST_F(SearchCost, FileGrownByTheCounter_OneRecordIsReadOnAverage) {
  open_indexed(numbered(0, 199));
  const long long read = read_by([&] {
    for (int i = 0; i < 5000; ++i) counter_.IncreaseCount(2020, 2, 1, i);
  });
  EXPECT_LE(read, 5000 * 100);  // the index is made again now and then
  std::string expected = numbered(0, 199);
  for (int i = 0; i < 5000; ++i) expected += record_bytes(2020, 2, 1, i, 1);
  EXPECT_TRUE(holds(expected));
}

TEST_F(SearchCost, SameKeySeveralTimes_IndexStays) {
  open_indexed(numbered(0, 999));
  for (int i = 0; i < 20; ++i) {
    EXPECT_LE(read_by([&] { increase(i); }), kFewBytes);
    for (int k = 0; k < 50; ++k) increase(i);
  }
  EXPECT_TRUE(same_as_model());
}

// Each of these increments pays for the index, so at some time it is cheaper to make another.
TEST_F(SearchCost, SameKeyVeryOften_IndexGivenUp) {
  open_indexed(numbered(0, 199));
  for (int k = 0; k < 50; ++k) increase(1);
  EXPECT_GT(read_by([&] { increase(2); }), kFewBytes);
  make_index();
  EXPECT_TRUE(same_as_model());
}

TEST_F(SearchCost, FewRecordsDeletedByRange_IndexStays) {
  open_indexed(numbered(0, 199) + record_bytes(2020, 1, 2, 7, 1) + record_bytes(2020, 1, 2, 8, 1));
  increase(50);
  EXPECT_EQ(counter_.DeleteEntryElement(moment(2020, 1, 2), moment(2020, 1, 2)), 0);
  model_.remove_range({2020, 1, 2}, {2020, 1, 2}, false);
  EXPECT_LE(read_by([&] { increase(3, 3); }), kFewBytes);
  EXPECT_TRUE(same_as_model());
  EXPECT_EQ(model_file_.substr(200 * kRecordBytes, kRecordBytes), record_bytes(2020, 1, 3, 3, 1));
}

TEST_F(SearchCost, FewRecords_NoIndex) {
  write(numbered(0, 126));
  open();
  for (int i = 0; i < 50; ++i) EXPECT_GE(read_by([&] { counter_.DeleteEntryElement(1999, 1, 1, -1); }), 127 * 32) << i;
}

/// The index itself, asked and told as a counter does.
class EntryCounterIndex : public testing::Test {
 protected:
  EntryCounterIndex() {
    for (int key = 0; key < 200; ++key) bytes_ += record_bytes(2020, 1, 1, key, 1);
    write_in_place(path_, bytes_);
    descriptor_ = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
  }
  ~EntryCounterIndex() override { close(descriptor_); }

  void scan() {
    RecordScanner scanner(descriptor_, 0);
    while (scanner.next()) continue;
    index_.scanned(descriptor_, scanner);
  }
  std::optional<RecordPlace> find(int key) { return index_.find_record(descriptor_, combination(key)); }
  static CounterRecord combination(int key) { return {32, 2020, 1, 1, key, 1, {0, 0}}; }
  void write_as_the_counter(long long position, int key) {
    const RecordBytes bytes = encode_record(combination(key));
    EXPECT_EQ(pwrite(descriptor_, bytes.data(), bytes.size(), position), qzlog::counter_record::kSize);
    index_.written(descriptor_, position, bytes);
  }

  TempDir folder_;
  const std::string path_ = folder_.path("days.cnt");
  const OtherProcess other_{folder_.path()};
  std::string bytes_;
  int descriptor_;
  _qz_LOG_EntryCounterIndex index_;
};

TEST_F(EntryCounterIndex, NotScannedEnough_NoAnswer) {
  EXPECT_FALSE(find(1).has_value());
  scan();
  EXPECT_FALSE(find(1).has_value());
  EXPECT_FALSE(index_.find_free(descriptor_).has_value());
}

TEST_F(EntryCounterIndex, ScannedTwice_FindsAndFollowsWrites) {
  scan();
  scan();
  ASSERT_TRUE(find(70).has_value());
  EXPECT_EQ(find(70)->position, 70 * 32);
  EXPECT_EQ(find(700)->holds, RecordPlace::Holds::kEnd);
  write_as_the_counter(200 * 32, 700);
  EXPECT_EQ(find(700)->holds, RecordPlace::Holds::kRecord);
  EXPECT_EQ(find(700)->position, 200 * 32);
  EXPECT_EQ(index_.find_free(descriptor_)->position, 201 * 32);
}

TEST_F(EntryCounterIndex, SizeChangedByAnotherDuringTheOperation_Dropped) {
  scan();
  scan();
  ASSERT_TRUE(find(700).has_value());
  other_.replace(path_, 200 * 32, bytes_.substr(0, 64));
  write_as_the_counter(200 * 32, 700);
  EXPECT_FALSE(find(70).has_value());
}

TEST_F(EntryCounterIndex, WrittenBetweenTwoRecords_Dropped) {
  scan();
  scan();
  ASSERT_TRUE(find(70).has_value());
  write_as_the_counter(50 * 32 + 4, 1);
  EXPECT_FALSE(find(70).has_value());
}

TEST_F(EntryCounterIndex, AnotherFileBehindTheDescriptor_Dropped) {
  scan();
  scan();
  ASSERT_TRUE(find(70).has_value());
  write_in_place(folder_.path("other.cnt"), bytes_);
  const int other = ::open(folder_.path("other.cnt").c_str(), O_RDWR | O_CLOEXEC);
  dup2(other, descriptor_);
  close(other);
  write_as_the_counter(50 * 32, 50);
  EXPECT_FALSE(find(70).has_value());
}

TEST_F(EntryCounterIndex, RecordOfNoDate_NoAnswer) {
  scan();
  scan();
  EXPECT_FALSE(index_.find_record(descriptor_, {32, 0, 0, 0, 7, 1, {0, 0}}).has_value());
}

}  // namespace
