#ifndef QZLOG_COUNTER_RECORD_LAYOUT_H
#define QZLOG_COUNTER_RECORD_LAYOUT_H

/// Constants of the counter file, for the library, which counts, and the tools, which show what was counted. A record
/// is its own size, year, month, day, key and count, each a big-endian number of four bytes, and eight reserved bytes.
namespace qzlog::counter_record {

inline constexpr int kSize = 32;

inline constexpr int kSizeOffset = 0;
inline constexpr int kYearOffset = 4;
inline constexpr int kMonthOffset = 8;
inline constexpr int kDayOffset = 12;
inline constexpr int kKeyOffset = 16;
inline constexpr int kCountOffset = 20;
inline constexpr int kReservedOffset = 24;

inline constexpr int kDateOffset = kYearOffset;             // the year, the month and the day
inline constexpr int kDateSize = kKeyOffset - kDateOffset;  // a record with zeros there is free
inline constexpr int kCombinationSize =
    kCountOffset - kDateOffset;  // the date and the key: what a record is looked up by

/// What the name of a counter's file ends with.
inline constexpr const char* kFileSuffix = ".cnt";

}  // namespace qzlog::counter_record

#endif  // QZLOG_COUNTER_RECORD_LAYOUT_H
