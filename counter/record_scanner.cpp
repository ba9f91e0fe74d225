#include "counter/record_scanner.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace qzlog {

namespace {

using Holds = RecordPlace::Holds;

RecordPlace current_place(const RecordScanner& scanner, Holds holds) {
  return {holds, scanner.position(), scanner.record()};
}

RecordPlace end_place(const RecordScanner& scanner) {
  return {scanner.failed() ? Holds::kUnreadable : Holds::kEnd, scanner.position(), {}};
}

}  // namespace

/// Asks at least once, so that what cannot be read is known as such, even if nothing is wanted of it.
BytesRead read_at(int descriptor, long long position, unsigned char* target, std::size_t size_bytes) {
  BytesRead read = {0, false};
  ssize_t moved = 0;
  do {
    const auto start = static_cast<off_t>(position + static_cast<long long>(read.size_bytes));
    moved =
        uninterrupted([&] { return pread(descriptor, target + read.size_bytes, size_bytes - read.size_bytes, start); });
    if (moved > 0) read.size_bytes += static_cast<std::size_t>(moved);
  } while (moved > 0 && read.size_bytes < size_bytes);
  read.failed = moved < 0;
  return read;
}

ssize_t read_record_bytes(int descriptor, long long position, RecordBytes& bytes) {
  const BytesRead read = read_at(descriptor, position, bytes.data(), bytes.size());
  return read.failed ? -1 : static_cast<ssize_t>(read.size_bytes);
}

RecordScanner::RecordScanner(int descriptor, long long position)
    : descriptor_(descriptor), end_(0), block_position_(position) {
  struct stat status = {};
  failed_ = fstat(descriptor, &status) != 0;
  if (!failed_) end_ = static_cast<long long>(status.st_size);
}

/// Without the size nothing is read: an end that is not known is no place for a new record.
bool RecordScanner::read_block() {
  if (failed_) return false;
  block_position_ += index_ > 0 ? index_ : 0;
  index_ = 0;
  const auto wanted = static_cast<std::size_t>(std::clamp(end_ - block_position_, 0LL, kBlockSize));
  const BytesRead read = read_at(descriptor_, block_position_, block_, wanted);
  size_ = static_cast<int>(read.size_bytes);
  // What stands before the error counts; reading on from there meets the error again.
  failed_ = read.failed && size_ < counter_record::kSize;
  return size_ >= counter_record::kSize;
}

RecordPlace scan_for_record(RecordScanner& scanner, const CounterRecord& wanted) {
  const RecordBytes wanted_bytes = encode_record(wanted);
  RecordPlace first_free = {Holds::kEnd, 0, {}};
  while (scanner.next()) {
    if (is_same_combination(scanner.bytes(), wanted_bytes.data())) return current_place(scanner, Holds::kRecord);
    if (first_free.holds == Holds::kEnd && is_free_record(scanner.bytes()))
      first_free = current_place(scanner, Holds::kFree);
  }
  return first_free.holds == Holds::kEnd || scanner.failed() ? end_place(scanner) : first_free;
}

RecordPlace scan_for_free(RecordScanner& scanner) {
  while (scanner.next()) {
    if (is_free_record(scanner.bytes())) return current_place(scanner, Holds::kFree);
  }
  return end_place(scanner);
}

}  // namespace qzlog
