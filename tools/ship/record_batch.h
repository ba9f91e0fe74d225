#ifndef QZLOG_TOOLS_SHIP_RECORD_BATCH_H
#define QZLOG_TOOLS_SHIP_RECORD_BATCH_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ship/transport.h"
#include "tools/ship/file_progress.h"
#include "tools/ship/line_parts.h"

namespace qzlog_tool {

/// Lines on their way to the receiver, and the places in files that are settled with them. Used again and again, it
/// takes no memory beyond that of the largest one.
class RecordBatch {
 public:
  struct Limits {
    std::size_t records = 5000;
    std::size_t bytes = std::size_t{2} << 20;  ///< of lines; one that has more is alone
  };
  enum class State {
    kWaiting,     ///< to be sent
    kSettled,     ///< acknowledged, or with the dead letters
    kPassedOver,  ///< not wanted: nothing is sent
  };

  explicit RecordBatch(const Limits& limits) : limits_(limits) {}

  /// A line of so many bytes has room.
  bool has_room_for(std::size_t bytes) const {
    return records_ < limits_.records && (records_ == 0 || bytes_.size() + bytes <= limits_.bytes);
  }
  /// No record has room, whatever its size.
  bool is_full() const { return records_ >= limits_.records || bytes_.size() >= limits_.bytes; }
  /// Takes a copy of all but `at.file`, which has to outlive the batch's use. The line has room.
  void add(std::string_view line, const LineParts& parts, std::string_view identity, const ReadLine& at);
  /// A line that is not sent: what was before it being settled, it is too.
  void pass_over(std::string_view identity, const ReadLine& at);

  bool has_records() const { return records_ != 0; }
  std::size_t record_count() const { return records_; }
  std::size_t byte_count() const { return bytes_.size(); }
  /// Something is to be settled, records or not.
  bool is_empty() const { return count_ == 0; }

  /// The records that wait, with `product`, which has to outlive them, as all else does until the batch is changed; and
  /// the number of each in the batch, for settle.
  void waiting(std::string_view product, std::vector<qzlog_record>& records, std::vector<std::size_t>& numbers) const;
  void settle(std::size_t number) { items_[number].state = State::kSettled; }
  /// Where a record stands.
  const ReadLine& place(std::size_t number) const { return items_[number].at; }

  /// Moves the places of files up to the first record of each that still waits, and empties the batch.
  void finish();

 private:
  struct Item {
    ReadLine at;
    State state = State::kWaiting;
    std::size_t begin = 0;  // of the line in bytes_; behind it stand writer and event
    std::size_t size = 0;
    std::size_t writer_size = 0;
    std::size_t event_size = 0;
    std::uint64_t seq = 0;
    std::uint32_t id = 0;
    int level = -1;
    std::string identity;
  };

  Item& next_item();
  qzlog_record record_of(const Item& item, std::string_view product) const;

  Limits limits_;
  std::string bytes_;
  std::vector<Item> items_;  // those behind count_ are kept for their memory
  std::size_t count_ = 0;
  std::size_t records_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_RECORD_BATCH_H
