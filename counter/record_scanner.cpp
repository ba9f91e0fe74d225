#include "counter/record_scanner.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace {

using Holds = RecordPlace::Holds;

long long file_size(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) == 0 ? static_cast<long long>(status.st_size) : 0;
}

RecordPlace current_place(const RecordScanner& scanner, Holds holds) {
  return {holds, scanner.position(), scanner.record()};
}

RecordPlace end_place(const RecordScanner& scanner) {
  return {scanner.failed() ? Holds::kUnreadable : Holds::kEnd, scanner.position(), {}};
}

}  // namespace

ssize_t read_record_bytes(int descriptor, long long position, RecordBytes& bytes) {
  return uninterrupted([&] { return pread(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(position)); });
}

RecordScanner::RecordScanner(int descriptor, long long position)
    : descriptor_(descriptor), end_(file_size(descriptor)), block_position_(position) {}

bool RecordScanner::read_block() {
  block_position_ += index_ > 0 ? index_ : 0;
  index_ = 0;
  const auto wanted = static_cast<std::size_t>(std::clamp(end_ - block_position_, 0LL, kBlockSize));
  const ssize_t moved =
      uninterrupted([&] { return pread(descriptor_, block_, wanted, static_cast<off_t>(block_position_)); });
  failed_ = moved < 0;
  size_ = failed_ ? 0 : static_cast<int>(moved);
  return size_ >= kRecordSize;
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
