#include "tools/ship/record_batch.h"

#include <algorithm>

namespace qzlog_tool {

namespace {

/// What a line of unusual length leaves of memory.
constexpr std::size_t kKeptBytes = std::size_t{8} << 20;

qzlog_text text_of(std::string_view text) { return {text.data(), text.size()}; }

}  // namespace

RecordBatch::Item& RecordBatch::next_item() {
  if (count_ == items_.size()) items_.emplace_back();
  return items_[count_++];
}

void RecordBatch::add(std::string_view line, const LineParts& parts, std::string_view identity, const ReadLine& at) {
  Item& item = next_item();
  item.at = at;
  item.state = State::kWaiting;
  item.begin = bytes_.size();
  item.size = line.size();
  item.writer_size = parts.writer.size();
  item.event_size = parts.event.size();
  item.seq = parts.seq;
  item.id = parts.id;
  item.level = parts.level;
  item.identity = identity;
  bytes_.append(line).append(parts.writer).append(parts.event);
  ++records_;
}

// Of many in a row only the last one counts.
void RecordBatch::pass_over(std::string_view identity, const ReadLine& at) {
  const bool goes_on =
      count_ > 0 && items_[count_ - 1].state == State::kPassedOver && items_[count_ - 1].at.file == at.file;
  Item& item = goes_on ? items_[count_ - 1] : next_item();
  item.at = at;
  item.state = State::kPassedOver;
  item.identity = identity;
}

qzlog_record RecordBatch::record_of(const Item& item, std::string_view product) const {
  const std::string_view bytes = bytes_;
  const std::size_t writer = item.begin + item.size;
  qzlog_record record = {};
  record.identity = text_of(item.identity);
  record.line = text_of(bytes.substr(item.begin, item.size));
  record.writer = text_of(bytes.substr(writer, item.writer_size));
  record.event = text_of(bytes.substr(writer + item.writer_size, item.event_size));
  record.product = text_of(product);
  record.seq = item.seq;
  record.id = item.id;
  record.level = item.level;
  return record;
}

void RecordBatch::waiting(std::string_view product, std::vector<qzlog_record>& records,
                          std::vector<std::size_t>& numbers) const {
  records.clear();
  numbers.clear();
  for (std::size_t number = 0; number < count_; ++number) {
    if (items_[number].state != State::kWaiting) continue;
    records.push_back(record_of(items_[number], product));
    numbers.push_back(number);
  }
}

void RecordBatch::finish() {
  std::vector<const FileProgress*> stopped;
  for (std::size_t number = 0; number < count_; ++number) {
    const Item& item = items_[number];
    FileProgress& file = *item.at.file;
    if (std::find(stopped.begin(), stopped.end(), &file) != stopped.end()) continue;
    if (item.state == State::kWaiting) {
      stopped.push_back(&file);
    } else {
      file.settled = item.at.end;
      file.identity = item.identity;
    }
  }
  count_ = 0;
  records_ = 0;
  bytes_.clear();
  if (bytes_.capacity() > kKeptBytes) bytes_.shrink_to_fit();
}

}  // namespace qzlog_tool
