#include "tools/count/count_merge.h"

#include <limits>

#include "counter/record_layout.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

namespace layout = qzlog::counter_record;

void put(std::uint32_t number, int offset, std::string& record) {
  auto at = static_cast<std::size_t>(offset);
  for (int shift = 24; shift >= 0; shift -= 8) record[at++] = static_cast<char>(number >> shift & 0xFFU);
}

std::string record_of(const CounterPlace& place, std::uint32_t count) {
  std::string record(layout::kSize, '\0');
  put(layout::kSize, layout::kSizeOffset, record);
  put(static_cast<std::uint32_t>(static_cast<int>(place.day.year())), layout::kYearOffset, record);
  put(static_cast<unsigned>(place.day.month()), layout::kMonthOffset, record);
  put(static_cast<unsigned>(place.day.day()), layout::kDayOffset, record);
  put(static_cast<std::uint32_t>(place.key), layout::kKeyOffset, record);
  put(count, layout::kCountOffset, record);
  return record;
}

}  // namespace

void CountMerge::add(const CountBatch& batch, const std::string& name) {
  if (!batch.folded.is_empty() || !batch.counts.empty()) add_folded(batch, name);
  for (const auto& [place, lines] : batch.lines) {
    const std::uint64_t added = seen_.add(lines);
    doubles_ += lines.size() - added;
    if (added != 0) counts_[place] += added;
  }
}

// One whose lines are all there was folded into another, and could not be removed then.
void CountMerge::add_folded(const CountBatch& batch, const std::string& name) {
  const std::uint64_t size = batch.folded.size();
  const std::uint64_t there = seen_.count(batch.folded);
  if (there == size && size != 0) {
    doubles_ += size;
    return;
  }
  if (there != 0) {
    throw CommandError(kExitCannotRun, "'" + name + "' and another folded batch cover " + std::to_string(there) +
                                           " lines both, and no more tell to which counts they belong: fold batches "
                                           "of one group together, never apart");
  }
  seen_.add(batch.folded);
  for (const auto& [place, count] : batch.counts) counts_[place] += count;
}

std::string CountMerge::counter_bytes() const {
  std::string bytes;
  for (const auto& [place, count] : counts_) {
    if (count > std::numeric_limits<std::uint32_t>::max()) {
      throw CommandError(kExitCannotRun, "the count of " + day_text(place.day) + " and the key " +
                                             std::to_string(place.key) + " is " + std::to_string(count) +
                                             ", and a counter has room up to 4294967295");
    }
    bytes += record_of(place, static_cast<std::uint32_t>(count));
  }
  return bytes;
}

}  // namespace qzlog_tool
