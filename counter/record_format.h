#ifndef QZLOG_COUNTER_RECORD_FORMAT_H
#define QZLOG_COUNTER_RECORD_FORMAT_H

#include <array>
#include <cstring>

#include "counter/record_layout.h"
#include "qzlog/logentrycounter.h"

namespace qzlog {

using CounterRecord = _qz_LOG_EntryCounterElement;

static_assert(sizeof(CounterRecord) == counter_record::kSize);

/// A record as it stands in the file: record size, year, month, day, key and count, each a big-endian number of four
/// bytes, and eight reserved bytes that have no meaning and so no byte order.
using RecordBytes = std::array<unsigned char, counter_record::kSize>;

RecordBytes encode_record(const CounterRecord& record);
/// `bytes` are a record's 32.
CounterRecord decode_record(const unsigned char* bytes);

inline bool is_free_record(const unsigned char* bytes) {
  static constexpr unsigned char kNoDate[counter_record::kDateSize] = {};
  return std::memcmp(bytes + counter_record::kDateOffset, kNoDate, counter_record::kDateSize) == 0;
}

inline bool is_same_combination(const unsigned char* left, const unsigned char* right) {
  return std::memcmp(left + counter_record::kDateOffset, right + counter_record::kDateOffset,
                     counter_record::kCombinationSize) == 0;
}

inline bool is_free_record(const CounterRecord& record) {
  return record.year == 0 && record.month == 0 && record.day == 0;
}

inline bool is_same_combination(const CounterRecord& left, const CounterRecord& right) {
  return left.year == right.year && left.month == right.month && left.day == right.day &&
         left.entry_key == right.entry_key;
}

}  // namespace qzlog

#endif  // QZLOG_COUNTER_RECORD_FORMAT_H
