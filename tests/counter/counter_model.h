#ifndef QZLOG_TESTS_COUNTER_COUNTER_MODEL_H
#define QZLOG_TESTS_COUNTER_COUNTER_MODEL_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/counter/counter_fixture.h"

namespace qz_test {

struct ModelRecord {
  int size;
  int year;
  int month;
  int day;
  int key;
  int count;
  std::string reserved;

  std::string bytes() const { return record_bytes(year, month, day, key, count, size, reserved); }
  bool is_free() const { return year == 0 && month == 0 && day == 0; }
  bool has(int other_year, int other_month, int other_day, int other_key) const {
    return year == other_year && month == other_month && day == other_day && key == other_key;
  }
};

struct ModelDate {
  int year;
  int month;
  int day;
};

/// A counter told as a story: the file is a text in memory, the stream a position in it, and every operation goes
/// through the records one by one as a person would with pencil and paper.
class CounterModel {
 public:
  /// `image` null: the file could neither be opened nor created.
  void open(std::string* image, bool writable) {
    image_ = image;
    opened_ = image != nullptr;
    position_ = 0;
    if (opened_) writable_ = writable;
  }
  int close() {
    image_ = nullptr;
    return 0;
  }
  bool has_stream() const { return image_ != nullptr; }
  std::size_t position() const { return position_; }
  void set_position(std::size_t position) { position_ = position; }
  /// Where the records lie that the last range delete freed.
  const std::vector<std::size_t>& freed() const { return freed_; }

  int increase(int year, int month, int day, int key) {
    if (!opened_ || !writable_) return 0;
    if (image_ == nullptr) return -1;
    if (last_record_ && last_key_ == key && last_position_ != -1) {
      seek(static_cast<std::size_t>(last_position_));
      auto record = read();
      if (record && record->has(last_record_->year, last_record_->month, last_record_->day, last_record_->key)) {
        record->count = next_count(record->count);
        write_at(static_cast<std::size_t>(last_position_), *record);
        return 0;
      }
    }
    auto found = search(year, month, day, key);
    if (found) {
      found->count = next_count(found->count);
      last_position_ = static_cast<long>(found_at_);
      last_key_ = key;
      last_record_ = found;
      write_at(found_at_, *found);
      return 0;
    }
    last_record_ = ModelRecord{32, year, month, day, key, 1, std::string(8, '\0')};
    add(*last_record_);
    last_key_ = key;
    return 0;
  }

  int update(int year, int month, int day, int key, int count) {
    if (!opened_ || !writable_) return 0;
    if (image_ == nullptr) return -1;
    auto found = search(year, month, day, key);
    if (!found) return add({32, year, month, day, key, count, std::string(8, '\0')});
    found->count = count;
    write_at(found_at_, *found);
    return 0;
  }

  int remove(int year, int month, int day, int key) {
    if (!opened_ || !writable_) return 0;
    if (image_ == nullptr) return -1;
    const auto found = search(year, month, day, key);
    if (found) write_at(found_at_, {32, 0, 0, 0, 0, 0, found->reserved});
    return 0;
  }

  int remove_range(const ModelDate& from, const ModelDate& to, bool from_is_later) {
    freed_.clear();
    if (!opened_ || !writable_) return 0;
    if (image_ == nullptr || from_is_later) return -1;
    while (!at_end()) {
      const std::size_t start = position_;
      const auto record = read();
      if (!record || record->is_free()) continue;
      if (record->year < from.year || record->year > to.year) continue;
      if (record->month < from.month || record->month > to.month) continue;
      if (record->day < from.day || record->day > to.day) continue;
      write_at(start, {32, 0, 0, 0, 0, 0, record->reserved});
      freed_.push_back(start);
    }
    return 0;
  }

  int add_element(const ModelRecord& record) {
    if (!opened_ || !writable_) return 0;
    if (image_ == nullptr) return -1;
    return add(record);
  }

 private:
  static int next_count(int count) { return static_cast<int>(static_cast<unsigned>(count) + 1U); }

  void seek(std::size_t position) { position_ = position; }
  bool at_end() const { return position_ >= image_->size(); }

  /// What is less than a record is used up and is none.
  std::optional<ModelRecord> read() {
    if (at_end()) return std::nullopt;
    const std::string_view bytes = std::string_view(*image_).substr(position_, kRecordBytes);
    position_ += bytes.size();
    if (bytes.size() < kRecordBytes) return std::nullopt;
    return ModelRecord{number(bytes, 0),
                       number(bytes, 4),
                       number(bytes, 8),
                       number(bytes, 12),
                       number(bytes, 16),
                       number(bytes, 20),
                       std::string(bytes.substr(24))};
  }

  static int number(std::string_view bytes, std::size_t offset) {
    unsigned long long value = 0;
    for (std::size_t i = offset; i < offset + 4; ++i) value = value * 256 + static_cast<unsigned char>(bytes[i]);
    return static_cast<int>(static_cast<unsigned>(value));
  }

  std::optional<ModelRecord> search(int year, int month, int day, int key) {
    seek(0);
    while (!at_end()) {
      found_at_ = position_;
      auto record = read();
      if (record && record->has(year, month, day, key)) return record;
    }
    return std::nullopt;
  }

  int add(const ModelRecord& record) {
    seek(0);
    std::size_t place = image_->size() / kRecordBytes * kRecordBytes;  // over a piece of a record at the end
    while (!at_end()) {
      const std::size_t start = position_;
      const auto other = read();
      if (other && other->is_free()) {
        place = start;
        break;
      }
    }
    last_position_ = static_cast<long>(place);
    write_at(place, record);
    return 0;
  }

  void write_at(std::size_t position, const ModelRecord& record) {
    if (image_->size() < position + kRecordBytes) image_->resize(position + kRecordBytes);
    image_->replace(position, kRecordBytes, record.bytes());
    position_ = position + kRecordBytes;
  }

  std::string* image_ = nullptr;
  std::size_t position_ = 0;
  std::size_t found_at_ = 0;
  bool opened_ = false;
  bool writable_ = false;
  int last_key_ = -1;
  long last_position_ = -1;
  std::optional<ModelRecord> last_record_;
  std::vector<std::size_t> freed_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_COUNTER_COUNTER_MODEL_H
