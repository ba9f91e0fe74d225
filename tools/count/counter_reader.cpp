#include "tools/count/counter_reader.h"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>

#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Finding;
using qzlog_compiler::RuleInfo;

constexpr RuleInfo kRules[] = {
    {CounterRule::kRecordSize, "record-size", "The size field of a record is not 32."},
    {CounterRule::kImpossibleDate, "impossible-date",
     "A record's year, month and day are no date in the years 1 to 9999."},
    {CounterRule::kDuplicateRecord, "duplicate-record", "An earlier record has the same day and key."},
    {CounterRule::kPartialRecord, "partial-record", "The file ends inside a record: its length is no multiple of 32."},
};
static_assert(is_whole_table(kRules, CounterRule::kPartialRecord));

constexpr std::size_t kBufferBytes = std::size_t{64} << 10;
static_assert(kBufferBytes % kCounterRecordBytes == 0);

std::uint32_t big_endian(const char* bytes) {
  std::uint32_t value = 0;
  for (int index = 0; index < 4; ++index) value = value << 8 | static_cast<unsigned char>(bytes[index]);
  return value;
}

std::int32_t signed_field(const char* bytes) { return static_cast<std::int32_t>(big_endian(bytes)); }

auto order(const DayCount& count) { return std::tuple(count.day, count.key, count.offset); }

bool is_same_combination(const DayCount& left, const DayCount& right) {
  return left.day == right.day && left.key == right.key;
}

std::string fields_text(const CounterRecord& record) {
  return std::to_string(record.year) + "-" + std::to_string(record.month) + "-" + std::to_string(record.day) +
         ", key " + std::to_string(record.key) + ", count " + std::to_string(record.count);
}

Finding damage_at(std::uint64_t offset, CounterRule rule, std::string text) {
  Finding finding{"", {}, qzlog_compiler::Severity::kError, rule, std::move(text)};
  finding.offset = offset;
  return finding;
}

Finding wrong_size(const CounterRecord& record) {
  return damage_at(
      record.offset, CounterRule::kRecordSize,
      "the size field is " + std::to_string(record.record_size) + " instead of 32 (" + fields_text(record) + ")");
}

Finding impossible_date(const CounterRecord& record) {
  return damage_at(record.offset, CounterRule::kImpossibleDate, "there is no such date (" + fields_text(record) + ")");
}

/// A count whose day and key an earlier record has.
struct Duplicate {
  DayCount count;
  std::uint64_t first_offset;
};

Finding duplicate_record(const Duplicate& duplicate) {
  const DayCount& count = duplicate.count;
  return damage_at(count.offset, CounterRule::kDuplicateRecord,
                   "the record at offset " + std::to_string(duplicate.first_offset) + " has the same day and key (" +
                       day_text(count.day) + ", key " + std::to_string(count.key) + ", count " +
                       std::to_string(count.count) + ")");
}

// Leaves the first record of each day and key; `counts` is sorted.
std::vector<Duplicate> take_duplicates(std::vector<DayCount>& counts) {
  std::vector<Duplicate> found;
  std::size_t kept = 0;
  for (const DayCount& count : counts) {
    if (kept > 0 && is_same_combination(counts[kept - 1], count)) {
      found.push_back({count, counts[kept - 1].offset});
    } else {
      counts[kept++] = count;
    }
  }
  counts.resize(kept);
  std::sort(found.begin(), found.end(),
            [](const Duplicate& left, const Duplicate& right) { return left.count.offset < right.count.offset; });
  return found;
}

}  // namespace

std::span<const RuleInfo> all_counter_rules() { return kRules; }

const RuleInfo& rule_info(CounterRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

CounterRecordReader::CounterRecordReader(int descriptor, std::string file_name)
    : descriptor_(descriptor), file_name_(std::move(file_name)), buffer_(new char[kBufferBytes]) {}

// A pipe gives its bytes in pieces of any size.
bool CounterRecordReader::fill() {
  std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
  end_ -= std::exchange(begin_, 0);
  while (end_ < kCounterRecordBytes) {
    const std::size_t count = read_some(descriptor_, buffer_.get() + end_, kBufferBytes - end_, file_name_);
    if (count == 0) return false;
    end_ += count;
  }
  return true;
}

bool CounterRecordReader::next(CounterRecord& record) {
  if (end_ - begin_ < kCounterRecordBytes && !fill()) return false;
  const char* const bytes = buffer_.get() + begin_;
  namespace layout = qzlog::counter_record;
  record = {offset_,
            signed_field(bytes + layout::kSizeOffset),
            signed_field(bytes + layout::kYearOffset),
            signed_field(bytes + layout::kMonthOffset),
            signed_field(bytes + layout::kDayOffset),
            signed_field(bytes + layout::kKeyOffset),
            big_endian(bytes + layout::kCountOffset)};
  begin_ += kCounterRecordBytes;
  offset_ += kCounterRecordBytes;
  return true;
}

std::vector<DayCount> read_counts(int descriptor, const std::string& file_name,
                                  const std::function<void(Finding)>& report,
                                  const std::function<void(std::uint64_t)>& progress) {
  std::vector<DayCount> counts;
  CounterRecordReader reader(descriptor, file_name);
  CounterRecord record;
  while (reader.next(record)) {
    progress(reader.offset() / kCounterRecordBytes);
    const std::optional<CalendarDay> day = calendar_day(record.year, record.month, record.day);
    if (record.record_size != static_cast<std::int32_t>(kCounterRecordBytes)) {
      report(wrong_size(record));
    } else if (day) {
      counts.push_back({*day, record.key, record.count, record.offset});
    } else if (!record.is_free()) {
      report(impossible_date(record));
    }
  }
  std::sort(counts.begin(), counts.end(),
            [](const DayCount& left, const DayCount& right) { return order(left) < order(right); });
  for (const Duplicate& found : take_duplicates(counts)) report(duplicate_record(found));
  if (reader.rest_bytes() > 0) {
    report(damage_at(reader.offset(), CounterRule::kPartialRecord,
                     "the file ends after " + std::to_string(reader.rest_bytes()) + " of the 32 bytes"));
  }
  return counts;
}

}  // namespace qzlog_tool
