#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

#include "tests/counter/indexed_counter.h"

namespace {

using namespace qz_test;

/// What another does to a file.
struct Change {
  const char* name;
  std::function<void(std::string&)> apply;
};

void put(std::string& bytes, std::size_t number, const std::string& record) {
  bytes.replace(number * kRecordBytes, kRecordBytes, record);
}

const Change kChanges[] = {
    {"combination in front of the one looked for", [](auto& file) { put(file, 3, record_bytes(2020, 1, 1, 70, 9)); }},
    {"another combination in its place", [](auto& file) { put(file, 70, record_bytes(2020, 1, 1, 7070, 9)); }},
    {"freed", [](auto& file) { put(file, 70, free_record("garbage!")); }},
    {"count", [](auto& file) { put(file, 70, record_bytes(2020, 1, 1, 70, 1000)); }},
    {"an earlier one freed", [](auto& file) { put(file, 4, free_record()); }},
    {"first free one used", [](auto& file) { put(file, 180, record_bytes(2020, 1, 2, 5, 3)); }},
    {"all exchanged",
     [](auto& file) {
       std::string other;
       for (std::size_t at = file.size(); at >= kRecordBytes; at -= kRecordBytes)
         other += file.substr(at - kRecordBytes, kRecordBytes);
       file = other;
     }},
    {"one appended", [](auto& file) { file += record_bytes(2020, 1, 2, 5, 3); }},
    {"a piece appended", [](auto& file) { file += "piece"; }},
    {"cut in front of it", [](auto& file) { file.resize(70 * kRecordBytes); }},
    {"cut within it", [](auto& file) { file.resize(70 * kRecordBytes + 20); }},
    {"cut behind it", [](auto& file) { file.resize(71 * kRecordBytes); }},
    {"emptied", [](auto& file) { file.clear(); }},
};

class ChangedByAnother : public IndexedCounter {
 protected:
  const std::pair<const char*, std::function<int()>> operations_[6] = {
      {"increase", [&] { return increase(70); }},
      {"increase a new one", [&] { return increase(5, 2); }},
      {"update", [&] { return update(70); }},
      {"delete", [&] { return remove(70); }},
      {"delete what was not there", [&] { return remove(7070); }},
      {"add", [&] { return add(70); }},
  };
};

TEST_F(ChangedByAnother, AnyChangeBeforeAnyOperation_NoticedAtOnce) {
  for (const std::string& tail : {std::string(), free_record(), std::string("piece")}) {
    for (const Change& change : kChanges) {
      for (const auto& [name, operation] : operations_) {
        SCOPED_TRACE(std::string(name) + " after: " + change.name);
        open_indexed(numbered(0, 179) + (tail.size() == kRecordBytes ? tail : record_bytes(2020, 1, 1, 180, 1) + tail));
        increase(40);
        change.apply(model_file_);
        other_.rewrite(path(), model_file_);
        EXPECT_EQ(operation(), 0);
        EXPECT_TRUE(same_as_model());
        increase(71);
        EXPECT_TRUE(same_as_model());
      }
    }
  }
}

TEST_F(ChangedByAnother, DuringARunOfTheSameKey_NoticedByTheNextSearch) {
  for (const Change& change : kChanges) {
    SCOPED_TRACE(change.name);
    open_indexed(numbered(0, 180));
    for (int i = 0; i < 3; ++i) increase(2);
    change.apply(model_file_);
    other_.rewrite(path(), model_file_);
    for (int i = 0; i < 3; ++i) increase(2);
    EXPECT_EQ(increase(70), 0);
    EXPECT_TRUE(same_as_model());
  }
}

TEST_F(ChangedByAnother, BeforeASearchThatTheIndexCannotAnswer_Noticed) {
  open_indexed(numbered(0, 179) + free_record());
  put(model_file_, 3, record_bytes(2020, 1, 1, 70, 9));
  other_.rewrite(path(), model_file_);
  model_.increase(0, 0, 0, 0);
  EXPECT_EQ(counter_.IncreaseCount(0, 0, 0, 0), 0);
  EXPECT_EQ(increase(70), 0);
  EXPECT_TRUE(same_as_model());
}

TEST_F(ChangedByAnother, ThroughTheCountersOwnStream_Noticed) {
  open_indexed(numbered(0, 179));
  put(model_file_, 3, record_bytes(2020, 1, 1, 70, 9));
  EXPECT_EQ(fseek(counter_.GetFilePointer(), 3 * 32, SEEK_SET), 0);
  EXPECT_EQ(fwrite(model_file_.data() + 3 * kRecordBytes, 1, kRecordBytes, counter_.GetFilePointer()), kRecordBytes);
  other_.settle(path());
  EXPECT_EQ(increase(70), 0);
  EXPECT_TRUE(same_as_model());
}

TEST_F(ChangedByAnother, AnotherFileMovedInItsPlace_CounterStaysWithItsOwn) {
  open_indexed(numbered(0, 179));
  const std::string old_name = folder_.path("old.cnt");
  ASSERT_EQ(rename(path().c_str(), old_name.c_str()), 0);
  write(numbered(200, 379));
  EXPECT_EQ(increase(70), 0);
  EXPECT_TRUE(holds(numbered(200, 379)));
  EXPECT_TRUE(same_records(folder_.read("old.cnt"), model_file_));
}

TEST_F(ChangedByAnother, AnotherFileOpened_SearchedAfresh) {
  open_indexed(numbered(0, 179));
  write_in_place(folder_.path("other.cnt"), numbered(200, 379));
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), "other"), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 70), 0);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 270), 0);
  EXPECT_TRUE(same_records(folder_.read("other.cnt"), numbered(200, 269) + free_record() + numbered(271, 379)));
}

TEST_F(ChangedByAnother, StreamMovedBetweenTwoRecords_RangeDeleteThereIsNoticed) {
  open_indexed(numbered(0, 179) + std::string(4, '\0') + record_bytes(2020, 1, 2, 70, 1) + std::string(28, '\0'));
  EXPECT_EQ(fseek(counter_.GetFilePointer(), 180 * 32 + 4, SEEK_SET), 0);
  model_.set_position(180 * kRecordBytes + 4);
  EXPECT_EQ(counter_.DeleteEntryElement(moment(2020, 1, 2), moment(2020, 1, 2)), 0);
  model_.remove_range({2020, 1, 2}, {2020, 1, 2}, false);
  EXPECT_EQ(increase(5, 2), 0);
  EXPECT_TRUE(same_as_model());
}

/// Changes through a mapping: after the first one to a page the file's times tell of none.
class ChangedUnseen : public IndexedCounter {
 protected:
  static constexpr int kLast = 199;

  ~ChangedUnseen() override {
    if (memory_ != MAP_FAILED) munmap(memory_, 4096);
  }
  void map_file() {
    open_indexed(numbered(0, kLast));
    const int file = ::open(path().c_str(), O_RDWR | O_CLOEXEC);
    memory_ = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    ASSERT_NE(memory_, MAP_FAILED);
    change(0, record_bytes(2020, 1, 1, 0, 1));
    make_index();
  }
  void change(std::size_t number, const std::string& record) {
    std::memcpy(static_cast<char*>(memory_) + number * kRecordBytes, record.data(), kRecordBytes);
    put(model_file_, number, record);
  }

  void* memory_ = MAP_FAILED;
};

TEST_F(ChangedUnseen, RecordThatIsFound_NoticedAtOnce) {
  for (const std::string& record :
       {record_bytes(2020, 1, 1, 7070, 4), free_record(), record_bytes(2020, 1, 1, 70, 9)}) {
    map_file();
    change(70, record);
    EXPECT_EQ(increase(70), 0);
    EXPECT_TRUE(same_as_model());
  }
}

TEST_F(ChangedUnseen, FirstFreeRecordUsed_NoticedAtOnce) {
  map_file();
  remove(20);
  change(20, record_bytes(2020, 1, 2, 5, 3));
  EXPECT_EQ(increase(5, 2), 0);
  EXPECT_TRUE(same_as_model());
  remove(21);
  change(21, record_bytes(2020, 1, 1, 5000, 3));
  EXPECT_EQ(remove(5000), 0);
  EXPECT_TRUE(same_as_model());
}

TEST_F(ChangedUnseen, AnyOther_NoticedAfterAsManySearchesAsRecords) {
  map_file();
  change(3, record_bytes(2020, 1, 1, 70, 9));
  for (int i = 0; i <= kLast; ++i) counter_.DeleteEntryElement(1999, 1, 1, -1);
  increase(70);
  EXPECT_TRUE(holds(model_file_));
}

TEST_F(IndexedCounter, FileShrunkBelowTheIndexedSize_ScannedFromThenOn) {
  open_indexed(numbered(0, 199));
  model_file_ = numbered(0, 9);
  other_.rewrite(path(), model_file_);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(increase(i % 20), 0);
    EXPECT_EQ(remove(i % 7), 0);
  }
  EXPECT_TRUE(same_as_model());
}

}  // namespace
