#include "counter/logentrycounter_index.h"

#include <algorithm>
#include <new>

using namespace qzlog;

namespace {

using Holds = RecordPlace::Holds;

/// Records that were read in vain, having the hash of the one that is looked for: a file made up to have many of them
/// is better scanned.
constexpr int kMaxCandidates = 8;
/// So many times the file's records have to be scanned before its index is made.
constexpr long long kScansBeforeIndex = 2;
/// An index is kept up to date for so long a part of its records in writes without a search between them.
constexpr long long kRewritesShare = 8;

long long position_of(std::uint32_t number) { return static_cast<long long>(number) * counter_record::kSize; }

}  // namespace

std::optional<RecordPlace> _qz_LOG_EntryCounterIndex::find_record(int descriptor, const CounterRecord& wanted) {
  // A record of no date is found among the free ones, which the index does not tell apart.
  if (is_free_record(wanted)) return std::nullopt;
  const RecordBytes wanted_bytes = encode_record(wanted);
  const std::uint32_t hash = tag_of_record(wanted_bytes.data()).hash;
  records_.prefetch(hash);
  if (!is_usable(descriptor)) return std::nullopt;
  int candidates = 0;
  std::uint32_t number = records_.first(hash);
  for (; number != RecordIndex::kNone; number = records_.next(number)) {
    RecordBytes bytes;
    if (++candidates > kMaxCandidates || !read_expected(descriptor, number, bytes)) return std::nullopt;
    if (is_same_combination(bytes.data(), wanted_bytes.data())) {
      return RecordPlace{Holds::kRecord, position_of(number), decode_record(bytes.data())};
    }
  }
  return place_for_new(descriptor);
}

std::optional<RecordPlace> _qz_LOG_EntryCounterIndex::find_free(int descriptor) {
  if (!is_usable(descriptor)) return std::nullopt;
  return place_for_new(descriptor);
}

void _qz_LOG_EntryCounterIndex::scanned(int descriptor, const RecordScanner& scanner) {
  is_current(descriptor);
  scanned_records_ += scanner.position() / counter_record::kSize;
  file_records_ = scanner.end() / counter_record::kSize;
}

/// A long run of rewrites would pay for the stamps more than for another index.
void _qz_LOG_EntryCounterIndex::expect_write(int descriptor) {
  if (!is_valid_) return;
  if (++rewrites_ > records_.size() / kRewritesShare) {
    drop();
  } else {
    is_current(descriptor);
  }
}

void _qz_LOG_EntryCounterIndex::written(int descriptor, long long position, const RecordBytes& bytes) {
  if (!is_valid_) return;
  const FileStamp before = stamp_;
  stamp_ = FileStamp::of(descriptor);
  // Another size is another's doing. A position between two records is the caller's, who moved the stream there.
  is_valid_ = stamp_.device == before.device && stamp_.inode == before.inode &&
              stamp_.size == std::max(before.size, position + counter_record::kSize) &&
              position % counter_record::kSize == 0 && position < position_of(kMaxRecords);
  try {
    if (is_valid_)
      records_.set(static_cast<std::uint32_t>(position / counter_record::kSize), tag_of_record(bytes.data()));
  } catch (const std::bad_alloc&) {
    is_valid_ = false;
  }
  if (!is_valid_) drop();
}

void _qz_LOG_EntryCounterIndex::drop() {
  records_ = RecordIndex();
  is_valid_ = false;
  scanned_records_ = 0;
}

bool _qz_LOG_EntryCounterIndex::is_usable(int descriptor) {
  rewrites_ = 0;
  if (is_valid_ && ++searches_ <= records_.size()) return is_current(descriptor);
  const bool is_due = file_records_ >= kMinRecords && scanned_records_ >= kScansBeforeIndex * file_records_;
  return (is_valid_ || is_due) && make(descriptor);
}

bool _qz_LOG_EntryCounterIndex::is_current(int descriptor) {
  if (is_valid_ && FileStamp::of(descriptor) != stamp_) drop();
  return is_valid_;
}

/// False also when the file was changed meanwhile.
bool _qz_LOG_EntryCounterIndex::make(int descriptor) {
  drop();
  stamp_ = FileStamp::of(descriptor);
  const long long count = stamp_.size / counter_record::kSize;
  if (!stamp_.is_regular_file || count < kMinRecords || count > kMaxRecords) return false;
  try {
    is_valid_ = read_records(descriptor);
  } catch (const std::bad_alloc&) {
    is_valid_ = false;
  }
  if (!is_valid_) drop();
  searches_ = 0;
  return is_current(descriptor);
}

bool _qz_LOG_EntryCounterIndex::read_records(int descriptor) {
  const long long count = stamp_.size / counter_record::kSize;
  records_.reserve(static_cast<std::uint32_t>(count));
  RecordScanner scanner(descriptor, 0);
  while (records_.size() < count && scanner.next()) records_.append(tag_of_record(scanner.bytes()));
  records_.link();
  return records_.size() == count;
}

/// The place that is told is looked at, because most of what others do to a file in an unseen moment changes it.
std::optional<RecordPlace> _qz_LOG_EntryCounterIndex::place_for_new(int descriptor) {
  RecordBytes bytes;
  const std::uint32_t free = records_.first_free();
  if (free != RecordIndex::kNone) {
    if (!read_expected(descriptor, free, bytes)) return std::nullopt;
    return RecordPlace{Holds::kFree, position_of(free), decode_record(bytes.data())};
  }
  const long long end = position_of(records_.size());
  const ssize_t moved = read_record_bytes(descriptor, end, bytes);
  if (moved >= 0 && moved < counter_record::kSize) return RecordPlace{Holds::kEnd, end, {}};
  drop();
  return std::nullopt;
}

/// False when the record cannot be read, or is another than the index says.
bool _qz_LOG_EntryCounterIndex::read_expected(int descriptor, std::uint32_t number, RecordBytes& bytes) {
  if (read_record_bytes(descriptor, position_of(number), bytes) == counter_record::kSize &&
      records_.holds(number, tag_of_record(bytes.data()))) {
    return true;
  }
  drop();
  return false;
}
