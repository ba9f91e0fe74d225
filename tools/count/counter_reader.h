#ifndef QZLOG_TOOLS_COUNT_COUNTER_READER_H
#define QZLOG_TOOLS_COUNT_COUNTER_READER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "counter/record_layout.h"
#include "tools/count/calendar_day.h"
#include "tools/report/finding.h"

namespace qzlog_tool {

inline constexpr std::size_t kCounterRecordBytes = qzlog::counter_record::kSize;

/// What can be wrong in a counter file.
enum class CounterRule {
  kRecordSize,
  kImpossibleDate,
  kDuplicateRecord,
  kPartialRecord,
};

/// All rules, in the order of `CounterRule`.
std::span<const qzlog_compiler::RuleInfo> all_counter_rules();

const qzlog_compiler::RuleInfo& rule_info(CounterRule rule);

/// One record as it stands in the file.
struct CounterRecord {
  std::uint64_t offset = 0;
  std::int32_t record_size = 0;
  std::int32_t year = 0;
  std::int32_t month = 0;
  std::int32_t day = 0;
  std::int32_t key = 0;
  std::uint32_t count = 0;

  bool is_free() const noexcept { return year == 0 && month == 0 && day == 0; }
};

/// Reads the records of a counter file one by one, in memory that does not grow with their number.
class CounterRecordReader {
 public:
  /// Reads from `descriptor`, which has to outlive this object; `file_name` is for error texts.
  CounterRecordReader(int descriptor, std::string file_name);

  /// False at the end. Throws CommandError when the file cannot be read.
  bool next(CounterRecord& record);
  /// At the end: the bytes behind the last complete record.
  std::size_t rest_bytes() const noexcept { return end_ - begin_; }
  /// Where the next record begins.
  std::uint64_t offset() const noexcept { return offset_; }

 private:
  bool fill();

  int descriptor_;
  std::string file_name_;
  std::unique_ptr<char[]> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::uint64_t offset_ = 0;
};

/// The count of one day and key.
struct DayCount {
  CalendarDay day;
  std::int32_t key = 0;
  std::uint32_t count = 0;
  std::uint64_t offset = 0;
};

/// Every count of a counter file, ordered by day and key; free records are passed over. What is damaged is reported,
/// without the name of the file, and left out; of several records for one day and key the first counts, as it is the
/// one that a counter finds. `progress` hears the number of records read. Throws CommandError when the file cannot be
/// read.
std::vector<DayCount> read_counts(int descriptor, const std::string& file_name,
                                  const std::function<void(qzlog_compiler::Finding)>& report,
                                  const std::function<void(std::uint64_t)>& progress);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COUNTER_READER_H
