#ifndef QZLOG_TOOLS_COUNT_COUNT_BATCH_H
#define QZLOG_TOOLS_COUNT_COUNT_BATCH_H

#include <compare>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tools/count/calendar_day.h"
#include "tools/count/covered_lines.h"

namespace qzlog_tool {

/// What a counter counts by.
struct CounterPlace {
  CalendarDay day;
  std::int32_t key = 0;
  auto operator<=>(const CounterPlace&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// Counts with the lines that they cover, so that a line that comes in two batches is counted once. In a batch as it
/// was counted each place has its own lines; where batches were folded into one there are the counts, and the lines of
/// all places together, which take far less room.
struct CountBatch {
  std::map<CounterPlace, CoveredLines> lines = {};
  std::map<CounterPlace, std::uint64_t> counts = {};  ///< of what was folded
  CoveredLines folded = {};                           ///< the lines that these cover
  bool operator==(const CountBatch&) const = default;
};

/// Lines of text, the last one with a checksum of those before it:
///
///   qzlog counts 1
///   count 2026-11-21 1001 500
///   folded h/1/2 1-500
///   lines 2026-11-21 1001 h/1/3 1-20,22
///   digests 2026-11-21 1002 0123456789abcdef0123456789abcdef
///   checksum 0123456789abcdef
///
/// In the name of a writer blanks, control characters, percent signs and what is not ASCII are written as %20 and so
/// on.
std::string batch_text(const CountBatch& batch);

/// Thrown, with the line and the reason, for what is no such text or is damaged.
struct BadBatch : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Throws BadBatch.
CountBatch parse_batch(std::string_view text);

/// A text with the checksum that it has to have.
std::string with_batch_checksum(std::string text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COUNT_BATCH_H
