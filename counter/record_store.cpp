#include "counter/record_store.h"

#include <unistd.h>

#include <cerrno>
#include <new>

namespace qzlog {

namespace {

using Holds = RecordPlace::Holds;

/// Lets the index know of a scan. There is none before a scan that was long enough.
void note_scan(int descriptor, CounterIndexPointer& index, const RecordScanner& scanner) {
  if (index == nullptr && _qz_LOG_EntryCounterIndex::is_worthwhile(scanner.end()))
    index.reset(new (std::nothrow) _qz_LOG_EntryCounterIndex);
  if (index != nullptr) index->scanned(descriptor, scanner);
}

ssize_t write_bytes(int descriptor, long long position, const RecordBytes& bytes) {
  return uninterrupted([&] { return pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(position)); });
}

/// Writes what a record was, a part at a time where the system takes no more.
void write_back(int descriptor, const RecordPlace& place) {
  const RecordBytes bytes = encode_record(place.record);
  std::size_t done = 0;
  ssize_t moved = 1;
  while (moved > 0 && done < bytes.size()) {
    const auto position = static_cast<off_t>(place.position + static_cast<long long>(done));
    moved = uninterrupted([&] { return pwrite(descriptor, bytes.data() + done, bytes.size() - done, position); });
    if (moved > 0) done += static_cast<std::size_t>(moved);
  }
}

/// Undoes a record that was written in part, on a full disk.
void take_back(int descriptor, const RecordPlace& place) {
  if (place.holds != Holds::kEnd) {
    write_back(descriptor, place);
  } else {
    uninterrupted([&] { return ssize_t{ftruncate(descriptor, static_cast<off_t>(place.position))}; });
  }
}

}  // namespace

RecordPlace find_record(int descriptor, CounterIndexPointer& index, const CounterRecord& wanted) {
  if (index != nullptr) {
    if (const auto place = index->find_record(descriptor, wanted)) return *place;
  }
  return scan_for_record(descriptor, index, wanted);
}

RecordPlace scan_for_record(int descriptor, CounterIndexPointer& index, const CounterRecord& wanted) {
  RecordScanner scanner(descriptor, 0);
  const RecordPlace place = scan_for_record(scanner, wanted);
  note_scan(descriptor, index, scanner);
  return place;
}

RecordPlace find_free(int descriptor, CounterIndexPointer& index) {
  if (index != nullptr) {
    if (const auto place = index->find_free(descriptor)) return *place;
  }
  RecordScanner scanner(descriptor, 0);
  const RecordPlace place = scan_for_free(scanner);
  note_scan(descriptor, index, scanner);
  return place;
}

bool write_record(int descriptor, CounterIndexPointer& index, const RecordPlace& place, const CounterRecord& record) {
  const RecordBytes bytes = encode_record(record);
  const ssize_t written = write_bytes(descriptor, place.position, bytes);
  if (written == counter_record::kSize) {
    if (index != nullptr) index->written(descriptor, place.position, bytes);
    return true;
  }
  if (written >= 0) errno = ENOSPC;  // which alone takes a part
  if (written > 0) {
    if (index != nullptr) index->drop();
    const int error = errno;
    take_back(descriptor, place);
    errno = error;
  }
  return false;
}

int count_more(int count, unsigned times) { return static_cast<int>(static_cast<unsigned>(count) + times); }

}  // namespace qzlog
