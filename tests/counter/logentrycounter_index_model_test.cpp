#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "qzlog/logentrycounter.h"
#include "tests/counter/counter_fixture.h"
#include "tests/counter/counter_model.h"
#include "tests/counter/other_process.h"
#include "tests/counter/read_meter.h"
#include "tests/support/rounds.h"

namespace {

using namespace qz_test;

/// Drives two counters on one file of some hundred records, so that they make indexes, and a model for each that goes
/// through all records. Each counter is another process to the other one, and there is a third. After each operation
/// the result, the stream's position and every byte of the file are compared.
class IndexedSequence : public testing::Test {
 protected:
  void run(int operations, int kinds) {
    story_.str("");
    start();
    for (int i = 0; i < operations && !HasFailure(); ++i) {
      step(kinds);
      compare();
    }
    for (auto& counter : counters_) counter.reset();
    if (HasFailure()) std::cout << "the sequence was:" << story_.str() << "\n";
  }

  SeededRandom random_;
  int operations_ = 0;
  int searches_from_memory_ = 0;
  int changes_ = 0;

 private:
  struct Operation {
    std::string name;
    int result;
    int expected;
  };

  int pick(std::initializer_list<int> values) {
    return values.begin()[random_.between(0, static_cast<long long>(values.size()) - 1)];
  }
  std::size_t records() const { return image_.size() / kRecordBytes; }

  ModelRecord random_record() {
    ModelRecord record = {32, 2020, pick({1, 1, 2}), pick({1, 2, 3}), pick({-1, 0, 7}), 1, std::string(8, '\0')};
    if (random_.one_in(2)) record.key = static_cast<int>(random_.between(0, 300));
    if (random_.one_in(9)) record.year = record.month = record.day = 0;
    if (random_.one_in(20)) record.year = pick({-1, 0, INT_MIN, 70000});
    record.count = pick({1, 2, INT_MAX, -1});
    if (random_.one_in(5)) record.reserved.assign(8, static_cast<char>(random_.between(0, 255)));
    if (random_.one_in(9)) record.size = pick({0, 31, -32});
    return record;
  }
  /// One that the file has, more often than not.
  ModelRecord known_record() {
    ModelRecord record = random_record();
    if (records() == 0 || random_.one_in(4)) return record;
    const std::string bytes = image_.substr(random_number() * kRecordBytes, kRecordBytes);
    int fields[4];
    for (std::size_t i = 0; i < 4; ++i) {
      unsigned value = 0;
      for (std::size_t k = 0; k < 4; ++k) value = value << 8 | static_cast<unsigned char>(bytes[4 + 4 * i + k]);
      fields[i] = static_cast<int>(value);
    }
    record.year = fields[0];
    record.month = fields[1];
    record.day = fields[2];
    record.key = fields[3];
    return record;
  }
  std::size_t random_number() {
    return static_cast<std::size_t>(random_.between(0, static_cast<long long>(records()) - 1));
  }
  std::string random_bytes(long long low, long long high) {
    std::string bytes;
    for (auto left = random_.between(low, high); left > 0; --left) bytes += random_record().bytes();
    return bytes + (random_.one_in(3) ? random_.text(static_cast<std::size_t>(random_.between(1, 31))) : "");
  }

  void start() {
    image_ = random_bytes(120, 350);
    write_in_place(path_, image_);
    for (std::size_t i = 0; i < 2; ++i) {
      counters_[i] = std::make_unique<_qz_LOG_EntryCounter>();
      models_[i] = CounterModel();
      open(i);
    }
  }
  void open(std::size_t i) {
    EXPECT_EQ(counters_[i]->OpenEntryCounterFile(folder_.path().c_str(), "days"), 0);
    models_[i].open(&image_, true);
  }

  /// Of the kinds, the first are a counter's operations alone; then come those of the second counter; then those of
  /// others.
  void step(int kinds) {
    const auto chance = random_.between(0, 99);
    if (kinds > 2 && chance < 6) return change_behind_their_backs();
    activate(kinds > 1 && chance < 20 ? 1 : 0);
    if (chance >= 99) return open(active_);
    if (chance >= 97) return move_stream();
    story_ << "\n" << active_ << ": ";
    Operation operation;
    const long long read = meter_.bytes_read_by([&] { operation = random_operation(); });
    EXPECT_EQ(operation.result, operation.expected) << operation.name;
    ++operations_;
    if (is_search_ && records() > 128 && read <= kFewBytes) ++searches_from_memory_;
  }
  void activate(std::size_t i) {
    if (active_ != i) other_.settle(path_);
    active_ = i;
  }

  Operation random_operation() {
    const auto kind = random_.between(0, 99);
    is_search_ = kind < 92;
    if (kind < 45) return increase();
    if (kind < 60) return update();
    if (kind < 78) return remove();
    if (kind < 92) return add();
    if (kind < 97) return repeat();
    return remove_range();
  }

  std::ostream& tell(const char* operation, const ModelRecord& record) {
    return story_ << operation << " " << record.year << " " << record.month << " " << record.day << " " << record.key;
  }
  Operation increase() {
    const ModelRecord r = known_record();
    tell("increase", r);
    is_search_ = r.key != last_key_[active_];  // else the record may be the one before
    last_key_[active_] = r.key;
    return {"increase", counters_[active_]->IncreaseCount(r.year, r.month, r.day, r.key),
            models_[active_].increase(r.year, r.month, r.day, r.key)};
  }
  Operation repeat() {
    const ModelRecord r = known_record();
    const auto times = random_.between(2, 60);
    tell("increase", r) << ", times " << times;
    last_key_[active_] = r.key;
    Operation operation = {"repeat", 0, 0};
    for (auto left = times; left > 0; --left) {
      operation.result += counters_[active_]->IncreaseCount(r.year, r.month, r.day, r.key);
      operation.expected += models_[active_].increase(r.year, r.month, r.day, r.key);
    }
    return operation;
  }
  Operation update() {
    const ModelRecord r = known_record();
    tell("update", r);
    return {"update", counters_[active_]->UpdateEntryCount(r.year, r.month, r.day, r.key, r.count),
            models_[active_].update(r.year, r.month, r.day, r.key, r.count)};
  }
  Operation remove() {
    const ModelRecord r = known_record();
    tell("delete", r);
    return {"delete", counters_[active_]->DeleteEntryElement(r.year, r.month, r.day, r.key),
            models_[active_].remove(r.year, r.month, r.day, r.key)};
  }
  Operation add() {
    const ModelRecord r = random_.one_in(3) ? known_record() : random_record();
    tell("add", r);
    _qz_LOG_EntryCounterElement element = {r.size, r.year, r.month, r.day, r.key, r.count, {0, 0}};
    std::memcpy(element.reserved, r.reserved.data(), r.reserved.size());
    return {"add", counters_[active_]->addElement(&element), models_[active_].add_element(r)};
  }
  Operation remove_range() {
    const int month = pick({1, 2});
    const int day = pick({1, 2, 3});
    story_ << "range " << month << " " << day;
    const qz_Time time = moment(2020, month, day);
    return {"range", counters_[active_]->DeleteEntryElement(time, time),
            models_[active_].remove_range({2020, month, day}, {2020, month, day}, false)};
  }

  void move_stream() {
    auto position = static_cast<std::size_t>(random_.between(0, static_cast<long long>(image_.size())));
    if (!random_.one_in(6)) position = position / kRecordBytes * kRecordBytes;
    story_ << "\n" << active_ << ": seek " << position;
    EXPECT_EQ(fseek(counters_[active_]->GetFilePointer(), static_cast<long>(position), SEEK_SET), 0);
    models_[active_].set_position(position);
  }

  void change_behind_their_backs() {
    ++changes_;
    const auto kind = records() < 20 ? 1 : random_.between(0, 5);
    if (kind == 0) image_.resize(image_.size() - static_cast<std::size_t>(random_.between(0, 300)));
    if (kind == 1) image_ += random_bytes(1, 30);
    if (kind == 2) put(free_record(random_.text(8)));
    if (kind == 3) put(random_record().bytes());
    if (kind == 4) put(known_record().bytes());
    if (kind == 5) std::swap_ranges(image_.begin(), image_.begin() + 320, image_.end() - 320);
    story_ << "\nchange " << kind << " to " << readable_records(image_);
    other_.rewrite(path_, image_);
  }
  void put(const std::string& record) { image_.replace(random_number() * kRecordBytes, kRecordBytes, record); }

  void compare() {
    EXPECT_TRUE(same_records(folder_.read("days.cnt"), image_));
    for (std::size_t i = 0; i < 2; ++i) {
      EXPECT_EQ(static_cast<std::size_t>(ftell(counters_[i]->GetFilePointer())), models_[i].position()) << i;
    }
  }

  TempDir folder_;
  const std::string path_ = folder_.path("days.cnt");
  const OtherProcess other_{folder_.path()};
  const ReadMeter meter_;
  std::string image_;
  std::array<std::unique_ptr<_qz_LOG_EntryCounter>, 2> counters_;
  std::array<CounterModel, 2> models_;
  std::array<int, 2> last_key_ = {-1, -1};
  std::size_t active_ = 0;
  bool is_search_ = false;
  std::ostringstream story_;
};

TEST_F(IndexedSequence, RandomOperations_SameResultsPositionsAndBytesAsTheModel) {
  int sequences = 0;
  for (; sequences < rounds(60) && !HasFailure(); ++sequences) run(120, 1 + sequences % 3);
  std::cout << "sequences compared: " << sequences << ", operations: " << operations_ << ", of them from memory "
            << searches_from_memory_ << ", changes by others: " << changes_ << ", "
            << "seed " << random_.seed() << "\n";
  EXPECT_GT(searches_from_memory_, operations_ / 10);
}

}  // namespace
