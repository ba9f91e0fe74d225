#include "tools/count/counter_reader.h"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>

#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

namespace {

constexpr CounterRuleInfo kRules[] = {
    {CounterRule::kRecordSize, "record-size", "The size field of a record is not 32."},
    {CounterRule::kImpossibleDate, "impossible-date",
     "A record's year, month and day are no date in the years 1 to 9999."},
    {CounterRule::kDuplicateRecord, "duplicate-record", "An earlier record has the same day and key."},
    {CounterRule::kPartialRecord, "partial-record", "The file ends inside a record: its length is no multiple of 32."},
};

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

CounterDamage wrong_size(const CounterRecord& record) {
  return {CounterRule::kRecordSize, record.offset,
          "the size field is " + std::to_string(record.record_size) + " instead of 32 (" + fields_text(record) + ")"};
}

CounterDamage impossible_date(const CounterRecord& record) {
  return {CounterRule::kImpossibleDate, record.offset, "there is no such date (" + fields_text(record) + ")"};
}

CounterDamage duplicate(const DayCount& count, std::uint64_t first_offset) {
  return {CounterRule::kDuplicateRecord, count.offset,
          "the record at offset " + std::to_string(first_offset) + " has the same day and key (" + day_text(count.day) +
              ", key " + std::to_string(count.key) + ", count " + std::to_string(count.count) + ")"};
}

// Leaves the first record of each day and key; `counts` is sorted.
std::vector<CounterDamage> take_duplicates(std::vector<DayCount>& counts) {
  std::vector<CounterDamage> found;
  std::size_t kept = 0;
  for (const DayCount& count : counts) {
    if (kept > 0 && is_same_combination(counts[kept - 1], count)) {
      found.push_back(duplicate(count, counts[kept - 1].offset));
    } else {
      counts[kept++] = count;
    }
  }
  counts.resize(kept);
  std::sort(found.begin(), found.end(),
            [](const CounterDamage& left, const CounterDamage& right) { return left.offset < right.offset; });
  return found;
}

}  // namespace

std::span<const CounterRuleInfo> all_counter_rules() { return kRules; }

std::string_view counter_rule_name(CounterRule rule) { return kRules[static_cast<std::size_t>(rule)].name; }

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
                                  const std::function<void(const CounterDamage&)>& report,
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
  for (const CounterDamage& damage : take_duplicates(counts)) report(damage);
  if (reader.rest_bytes() > 0) {
    report({CounterRule::kPartialRecord, reader.offset(),
            "the file ends after " + std::to_string(reader.rest_bytes()) + " of the 32 bytes"});
  }
  return counts;
}

}  // namespace qzlog_tool
