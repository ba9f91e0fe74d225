#ifndef QZLOG_COUNTER_RECORD_FORMAT_H
#define QZLOG_COUNTER_RECORD_FORMAT_H

#include <array>
#include <cstring>

#include "qzlog/logentrycounter.h"

using CounterRecord = _qz_LOG_EntryCounterElement;

constexpr int kRecordSize = 32;
static_assert(sizeof(CounterRecord) == kRecordSize);

/// A record as it stands in the file: record size, year, month, day, key and count, each a big-endian number of four
/// bytes, and eight reserved bytes that have no meaning and so no byte order.
using RecordBytes = std::array<unsigned char, kRecordSize>;

constexpr int kDateOffset = 4;        // of the year, the month and the day
constexpr int kDateSize = 12;         // a record with zeros there is free
constexpr int kCombinationSize = 16;  // the date and the key: what a record is looked up by

RecordBytes encode_record(const CounterRecord& record);
/// `bytes` are a record's 32.
CounterRecord decode_record(const unsigned char* bytes);

inline bool is_free_record(const unsigned char* bytes) {
  static constexpr unsigned char kNoDate[kDateSize] = {};
  return std::memcmp(bytes + kDateOffset, kNoDate, kDateSize) == 0;
}

inline bool is_same_combination(const unsigned char* left, const unsigned char* right) {
  return std::memcmp(left + kDateOffset, right + kDateOffset, kCombinationSize) == 0;
}

inline bool is_free_record(const CounterRecord& record) {
  return record.year == 0 && record.month == 0 && record.day == 0;
}

inline bool is_same_combination(const CounterRecord& left, const CounterRecord& right) {
  return left.year == right.year && left.month == right.month && left.day == right.day &&
         left.entry_key == right.entry_key;
}

#endif  // QZLOG_COUNTER_RECORD_FORMAT_H
