#ifndef QZLOG_TESTS_COUNTER_INDEXED_COUNTER_H
#define QZLOG_TESTS_COUNTER_INDEXED_COUNTER_H

#include <string>

#include "counter/record_format.h"
#include "qzlog/logentrycounter.h"
#include "tests/counter/counter_fixture.h"
#include "tests/counter/counter_model.h"
#include "tests/counter/other_process.h"
#include "tests/counter/read_meter.h"

namespace qz_test {

/// A counter whose file has so many records, with the keys 0, 1, 2, ..., that it has made an index.
class IndexedCounter : public CounterTest {
 protected:
  void SetUp() override {
    if (!meter_.works()) GTEST_SKIP() << "the system does not count what a process reads";
  }

  static std::string numbered(int first, int last) {
    std::string bytes;
    for (int key = first; key <= last; ++key) bytes += record_bytes(2020, 1, 1, key, 1);
    return bytes;
  }
  void open_indexed(const std::string& bytes) {
    write(bytes);
    open();
    model_file_ = bytes;
    model_.open(&model_file_, true);
    make_index();
  }
  /// Searches for what is not there until a search costs nothing.
  void make_index() {
    for (int i = 0; i < 10; ++i) {
      model_.remove(1999, 1, 1, -1);
      if (read_by([&] { counter_.DeleteEntryElement(1999, 1, 1, -1); }) <= kFewBytes) return;
    }
    ADD_FAILURE() << "there is no index";
  }
  template <typename Operation>
  long long read_by(Operation operation) const {
    return meter_.bytes_read_by(operation);
  }

  int increase(int key, int day = 1) {
    model_.increase(2020, 1, day, key);
    return counter_.IncreaseCount(2020, 1, day, key);
  }
  int add(int key) {
    model_.add_element({32, 2020, 1, 1, key, 5, std::string(8, '\0')});
    _qz_LOG_EntryCounterElement element = {32, 2020, 1, 1, key, 5, {0, 0}};
    return counter_.addElement(&element);
  }
  int remove(int key) {
    model_.remove(2020, 1, 1, key);
    return counter_.DeleteEntryElement(2020, 1, 1, key);
  }
  int update(int key) {
    model_.update(2020, 1, 1, key, 77);
    return counter_.UpdateEntryCount(2020, 1, 1, key, 77);
  }
  void update_as(const qzlog::CounterRecord& record, int count) {
    model_.update(record.year, record.month, record.day, record.entry_key, count);
    EXPECT_EQ(counter_.UpdateEntryCount(record.year, record.month, record.day, record.entry_key, count), 0);
  }
  testing::AssertionResult same_as_model() {
    const auto position = static_cast<std::size_t>(ftell(counter_.GetFilePointer()));
    if (position != model_.position())
      return testing::AssertionFailure() << "stream at " << position << ", not at " << model_.position();
    return holds(model_file_);
  }

  const ReadMeter meter_;
  const OtherProcess other_{folder_.path()};
  CounterModel model_;
  std::string model_file_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_COUNTER_INDEXED_COUNTER_H
