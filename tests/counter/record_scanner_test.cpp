#include "counter/record_scanner.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/counter/counter_fixture.h"
#include "tests/support/call_failure.h"

using namespace qzlog;

namespace {

using namespace qz_test;

using Holds = RecordPlace::Holds;

class RecordScannerTest : public testing::Test {
 protected:
  ~RecordScannerTest() override { reopen(nullptr, O_RDONLY); }

  int open_with(const std::string& bytes, int mode = O_RDONLY) {
    write_in_place(path_, bytes);
    return reopen(path_.c_str(), mode);
  }
  int reopen(const char* path, int mode) {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = path == nullptr ? -1 : ::open(path, mode | O_CLOEXEC);
    return descriptor_;
  }
  static std::string numbered(int first, int last) {
    std::string bytes;
    for (int key = first; key <= last; ++key) bytes += record_bytes(2020, 1, 1, key, key);
    return bytes;
  }
  static CounterRecord combination(int key) { return {0, 2020, 1, 1, key, 0, {0, 0}}; }

  RecordPlace find(const std::string& bytes, int key, int mode = O_RDONLY) {
    RecordScanner scanner(open_with(bytes, mode), 0);
    return scan_for_record(scanner, combination(key));
  }
  RecordPlace find_free(const std::string& bytes, int mode = O_RDONLY) {
    RecordScanner scanner(open_with(bytes, mode), 0);
    return scan_for_free(scanner);
  }

  TempDir folder_;
  const std::string path_ = folder_.path("days.cnt");
  int descriptor_ = -1;
};

TEST_F(RecordScannerTest, AnyNumberOfRecordsAndAPiece_EachRecordOnceInOrder) {
  for (const int count : {0, 1, 127, 128, 129, 256, 300}) {
    for (const std::size_t piece : {0U, 1U, 31U}) {
      SCOPED_TRACE(std::to_string(count) + " and " + std::to_string(piece));
      const std::string bytes = numbered(1, count) + std::string(piece, 'x');
      RecordScanner scanner(open_with(bytes), 0);
      for (int key = 1; key <= count; ++key) {
        ASSERT_TRUE(scanner.next());
        ASSERT_EQ(scanner.record().entry_key, key);
        ASSERT_EQ(scanner.position(), (key - 1) * 32);
      }
      EXPECT_FALSE(scanner.next());
      EXPECT_FALSE(scanner.failed());
      EXPECT_EQ(scanner.position(), count * 32);
      EXPECT_EQ(scanner.end(), static_cast<long long>(bytes.size()));
    }
  }
}

TEST_F(RecordScannerTest, StartBetweenTwoRecords_ReadsFromThere) {
  RecordScanner scanner(open_with("xyz" + numbered(5, 6)), 3);
  ASSERT_TRUE(scanner.next());
  EXPECT_EQ(scanner.record().entry_key, 5);
  EXPECT_EQ(scanner.position(), 3);
}

TEST_F(RecordScannerTest, FileCutMeanwhile_EndsThereWithoutFailure) {
  RecordScanner scanner(open_with(numbered(1, 300)), 0);
  ASSERT_TRUE(scanner.next());
  write_in_place(path_, numbered(1, 130));
  int records = 1;
  while (scanner.next()) ++records;
  EXPECT_EQ(records, 130);
  EXPECT_FALSE(scanner.failed());
}

TEST_F(RecordScannerTest, CannotBeRead_Failed) {
  RecordScanner scanner(open_with(numbered(1, 3), O_WRONLY), 0);
  EXPECT_FALSE(scanner.next());
  EXPECT_TRUE(scanner.failed());
}

TEST_F(RecordScannerTest, SizeNotTold_FailedAndNothingFound) {
  const int descriptor = open_with(numbered(1, 3));
  const CallFailure failure(FileCall::kStatus, EIO);
  RecordScanner scanner(descriptor, 0);
  EXPECT_FALSE(scanner.next());
  EXPECT_TRUE(scanner.failed());
  RecordScanner again(descriptor, 0);
  EXPECT_EQ(scan_for_record(again, combination(3)).holds, Holds::kUnreadable);
}

TEST_F(RecordScannerTest, ReadInPieces_EachRecordOnceInOrder) {
  for (const int count : {1, 2, 127, 128, 129, 300}) {
    for (const int whole : {0, 1, 2}) {
      for (const int in_part : {1, 2, 5, ShortTransfers::kEvery}) {
        SCOPED_TRACE(std::to_string(count) + " " + std::to_string(whole) + " " + std::to_string(in_part));
        const int descriptor = open_with(numbered(1, count) + "piece");
        const ShortTransfers pieces(whole, in_part);
        RecordScanner scanner(descriptor, 0);
        int key = 0;
        while (scanner.next()) EXPECT_EQ(scanner.record().entry_key, ++key);
        EXPECT_EQ(key, count);
        EXPECT_FALSE(scanner.failed());
        EXPECT_EQ(scanner.position(), count * 32);
      }
    }
  }
}

TEST_F(RecordScannerTest, ErrorBehindAPiece_RecordsBeforeItThenFailed) {
  const int descriptor = open_with(numbered(1, 100));
  const struct {
    int in_part;
    int records;
  } cases[] = {{0, 0}, {1, 50}, {2, 75}};
  for (const auto& row : cases) {
    const ShortTransfers pieces(0, row.in_part, EIO);
    RecordScanner scanner(descriptor, 0);
    int records = 0;
    while (scanner.next()) EXPECT_EQ(scanner.record().entry_key, ++records);
    EXPECT_EQ(records, row.records);
    EXPECT_TRUE(scanner.failed());
  }
}

TEST_F(RecordScannerTest, OneRecordReadInPieces_Whole) {
  const std::string expected = numbered(7, 7);
  const int descriptor = open_with(expected + "piece");
  RecordBytes bytes = {};
  const ShortTransfers pieces;
  EXPECT_EQ(read_record_bytes(descriptor, 0, bytes), 32);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), expected);
  EXPECT_EQ(read_record_bytes(descriptor, 32, bytes), 5);
  EXPECT_EQ(read_record_bytes(descriptor, 64, bytes), 0);
}

TEST_F(RecordScannerTest, OneRecordBrokenOffByAnError_MinusOne) {
  const int descriptor = open_with(numbered(7, 7));
  RecordBytes bytes = {};
  const ShortTransfers pieces(0, 1, EIO);
  EXPECT_EQ(read_record_bytes(descriptor, 0, bytes), -1);
}

TEST_F(RecordScannerTest, Device_HasNoRecords) {
  RecordScanner scanner(reopen("/dev/zero", O_RDONLY), 0);
  EXPECT_FALSE(scanner.next());
  EXPECT_FALSE(scanner.failed());
}

TEST_F(RecordScannerTest, RecordWanted_FirstOneThenFreeThenEnd) {
  const std::string records = numbered(1, 2) + free_record() + numbered(3, 3) + free_record() + numbered(3, 3);
  EXPECT_EQ(find(records, 3).holds, Holds::kRecord);
  EXPECT_EQ(find(records, 3).position, 96);
  EXPECT_EQ(find(records, 3).record.count, 3);
  EXPECT_EQ(find(records, 4).holds, Holds::kFree);
  EXPECT_EQ(find(records, 4).position, 64);
  EXPECT_EQ(find(numbered(1, 3) + "piece", 4).holds, Holds::kEnd);
  EXPECT_EQ(find(numbered(1, 3) + "piece", 4).position, 96);
  EXPECT_EQ(find(free_record(), 4, O_WRONLY).holds, Holds::kUnreadable);
}

TEST_F(RecordScannerTest, FreeRecordWanted_FirstOneThenEnd) {
  const std::string records = numbered(1, 2) + record_bytes(0, 0, 0, 9, 9) + free_record();
  EXPECT_EQ(find_free(records).holds, Holds::kFree);
  EXPECT_EQ(find_free(records).position, 64);
  EXPECT_EQ(find_free(records).record.entry_key, 9);
  EXPECT_EQ(find_free(numbered(1, 3) + "piece").holds, Holds::kEnd);
  EXPECT_EQ(find_free(numbered(1, 3) + "piece").position, 96);
  EXPECT_EQ(find_free(records, O_WRONLY).holds, Holds::kUnreadable);
}

}  // namespace
