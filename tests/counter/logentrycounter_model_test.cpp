#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "qzlog/logentrycounter.h"
#include "tests/counter/counter_fixture.h"
#include "tests/counter/counter_model.h"
#include "tests/support/rounds.h"

namespace {

using namespace qz_test;

constexpr int kSequences = 4000;
constexpr int kOperations = 40;
constexpr std::array<const char*, 3> kFiles = {"a", "b", "c"};

/// Drives a counter and the model with the same random operations on three files. After each operation the result, the
/// stream's position and every byte of the files are compared.
class CounterSequence : public testing::Test {
 protected:
  CounterSequence() { chmod(folder_.path().c_str(), 0755); }

  void run() {
    counter_ = std::make_unique<_qz_LOG_EntryCounter>();
    model_ = CounterModel();
    story_.str("");
    for (std::size_t i = 0; i < kFiles.size(); ++i) start_file(i);
    open();
    for (int i = 0; i < kOperations && !HasFailure(); ++i) {
      step();
      compare();
    }
    counter_.reset();
    if (HasFailure()) std::cout << "the sequence was:" << story_.str() << "\n";
  }

  SeededRandom random_;
  int steps_ = 0;

 private:
  std::string file_name(std::size_t i) const { return std::string(kFiles[i]) + ".cnt"; }

  int pick(std::initializer_list<int> values) {
    return values.begin()[random_.between(0, static_cast<long long>(values.size()) - 1)];
  }
  ModelRecord random_record() {
    const int year = pick({2019, 2020, 2020, 2020, 2021, -1});
    ModelRecord record = {32, year, pick({1, 1, 2, 12}), pick({1, 2, 31}), pick({-1, 0, 7, 7, 8, 9}), 1, {}};
    record.count = random_.one_in(5) ? pick({INT_MAX, INT_MIN, -1, 0}) : pick({1, 2, 300});
    if (random_.one_in(12)) record.year = record.month = record.day = 0;
    if (random_.one_in(20)) record.month = 0;
    record.reserved.assign(8, static_cast<char>(random_.one_in(3) ? random_.between(0, 255) : 0));
    if (random_.one_in(6)) record.size = pick({0, 31, -32});
    return record;
  }
  std::string random_bytes() {
    std::string bytes;
    for (auto left = random_.between(0, 6); left > 0; --left) bytes += random_record().bytes();
    return bytes + (random_.one_in(3) ? random_.text(static_cast<std::size_t>(random_.between(1, 31))) : "");
  }

  void store(std::size_t i, const std::string& bytes) {
    images_[i] = bytes;
    write_in_place(folder_.path(file_name(i)), bytes);
  }
  void start_file(std::size_t i) {
    exists_[i] = !random_.one_in(4);
    images_[i].clear();
    std::filesystem::remove(folder_.path(file_name(i)));
    if (exists_[i]) store(i, random_bytes());
  }

  void step() {
    ++steps_;
    switch (random_.between(0, 15)) {
      case 0:
        return random_.one_in(3) ? open() : close();
      case 1:
        return change_behind_its_back();
      case 2:
        return move_stream();
      case 3:
      case 4:
        return update();
      case 5:
      case 6:
        return remove();
      case 7:
      case 8:
        return remove_range();
      case 9:
        return add();
      default:
        return increase();
    }
  }

  void open() {
    const std::string slashes(static_cast<std::size_t>(random_.between(0, 3)), '/');
    const auto i = static_cast<std::size_t>(random_.between(0, 2));
    const auto kind = random_.between(0, 11);
    if (kind == 0) return open_failing();
    story_ << "\nopen " << kFiles[i] << (kind <= 2 ? " read-only" : "");
    if (kind <= 2 && exists_[i]) {
      const ReadOnlyFile read_only(folder_.path(file_name(i)));
      model_.open(&images_[i], !read_only.holds());
      EXPECT_EQ(counter_->OpenEntryCounterFile((folder_.path() + slashes).c_str(), kFiles[i]), 0);
    } else {
      model_.open(&images_[i], true);
      exists_[i] = true;
      EXPECT_EQ(counter_->OpenEntryCounterFile((folder_.path() + slashes).c_str(), kFiles[i]), 0);
    }
  }
  void open_failing() {
    story_ << "\nopen failing";
    model_.open(nullptr, false);
    const std::string missing = folder_.path("missing");
    EXPECT_EQ(counter_->OpenEntryCounterFile(random_.one_in(2) ? nullptr : missing.c_str(), "a"), 0);
  }
  void close() {
    story_ << "\nclose";
    EXPECT_EQ(counter_->CloseEntryCounterFile(), model_.close());
  }

  void change_behind_its_back() {
    const auto i = static_cast<std::size_t>(random_.between(0, 2));
    if (!exists_[i]) return;
    std::string bytes = images_[i];
    const auto change = random_.between(0, 2);
    if (change == 0) {
      bytes.resize(static_cast<std::size_t>(random_.between(0, static_cast<long long>(bytes.size()))));
    } else if (change == 1) {
      bytes += random_bytes();
    } else if (bytes.size() >= kRecordBytes) {
      const auto last = static_cast<long long>(bytes.size() / kRecordBytes) - 1;
      bytes.replace(static_cast<std::size_t>(random_.between(0, last)) * kRecordBytes, kRecordBytes,
                    random_record().bytes());
    }
    story_ << "\nchanged " << kFiles[i] << " to " << readable_records(bytes);
    store(i, bytes);
  }

  void move_stream() {
    if (!model_.has_stream() || current_size() == 0) return;
    auto position = random_.between(0, static_cast<long long>(current_size()));
    if (!random_.one_in(4)) position = position / 32 * 32;
    story_ << "\nseek " << position;
    EXPECT_EQ(fseek(counter_->GetFilePointer(), static_cast<long>(position), SEEK_SET), 0);
    model_.set_position(static_cast<std::size_t>(position));
  }
  std::size_t current_size() {
    struct stat status = {};
    fstat(fileno(counter_->GetFilePointer()), &status);
    return static_cast<std::size_t>(status.st_size);
  }

  std::ostream& tell(const char* operation, const ModelRecord& record) {
    return story_ << "\n"
                  << operation << " " << record.year << " " << record.month << " " << record.day << " " << record.key;
  }
  void increase() {
    const ModelRecord r = random_record();
    tell("increase", r);
    EXPECT_EQ(counter_->IncreaseCount(r.year, r.month, r.day, r.key), model_.increase(r.year, r.month, r.day, r.key));
  }
  void update() {
    const ModelRecord r = random_record();
    tell("update", r) << " to " << r.count;
    EXPECT_EQ(counter_->UpdateEntryCount(r.year, r.month, r.day, r.key, r.count),
              model_.update(r.year, r.month, r.day, r.key, r.count));
  }
  void remove() {
    const ModelRecord r = random_record();
    tell("delete", r);
    EXPECT_EQ(counter_->DeleteEntryElement(r.year, r.month, r.day, r.key),
              model_.remove(r.year, r.month, r.day, r.key));
  }
  void add() {
    const ModelRecord r = random_record();
    tell("add", r);
    _qz_LOG_EntryCounterElement element = {r.size, r.year, r.month, r.day, r.key, r.count, {0, 0}};
    std::memcpy(element.reserved, r.reserved.data(), r.reserved.size());
    EXPECT_EQ(counter_->addElement(&element), model_.add_element(r));
  }
  void remove_range() {
    const ModelDate from = {pick({2019, 2020, 2020, 2021}), pick({1, 1, 2}), pick({1, 2, 31 - 3})};
    const ModelDate to = {pick({2019, 2020, 2020, 2021}), pick({1, 2, 12}), pick({1, 2, 28})};
    const qz_Time from_time = moment(from.year, from.month, from.day, static_cast<int>(random_.between(0, 23)));
    const qz_Time to_time = moment(to.year, to.month, to.day, static_cast<int>(random_.between(0, 23)));
    story_ << "\nrange " << from.year << " " << from.month << " " << from.day << " to " << to.year << " " << to.month
           << " " << to.day;
    EXPECT_EQ(counter_->DeleteEntryElement(from_time, to_time),
              model_.remove_range(from, to, from_time.unix_seconds() > to_time.unix_seconds()));
    adopt_reserved_bytes();
  }
  /// What a range delete leaves in the reserved bytes is its own affair.
  void adopt_reserved_bytes() {
    for (std::size_t i = 0; i < kFiles.size(); ++i) {
      const std::string found = folder_.read(file_name(i));
      for (const std::size_t start : model_.freed()) {
        if (found.size() == images_[i].size() && start + kRecordBytes <= found.size())
          images_[i].replace(start + 24, 8, found, start + 24, 8);
      }
    }
  }

  void compare() {
    for (std::size_t i = 0; i < kFiles.size(); ++i) {
      EXPECT_EQ(folder_.has(file_name(i)), exists_[i]);
      EXPECT_TRUE(same_records(folder_.read(file_name(i)), images_[i])) << "file " << kFiles[i];
    }
    EXPECT_EQ(counter_->GetFilePointer() != nullptr, model_.has_stream());
    if (counter_->GetFilePointer() != nullptr && model_.has_stream()) {
      EXPECT_EQ(static_cast<std::size_t>(ftell(counter_->GetFilePointer())), model_.position());
    }
  }

  TempDir folder_;
  std::array<std::string, 3> images_;
  std::array<bool, 3> exists_ = {};
  std::unique_ptr<_qz_LOG_EntryCounter> counter_;
  CounterModel model_;
  std::ostringstream story_;
};

TEST_F(CounterSequence, RandomOperations_SameResultsPositionsAndBytesAsTheModel) {
  int sequences = 0;
  for (; sequences < rounds(kSequences) && !HasFailure(); ++sequences) run();
  std::cout << "sequences compared: " << sequences << ", operations: " << steps_ << ", "
            << "seed " << random_.seed() << "\n";
}

}  // namespace
