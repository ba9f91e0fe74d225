#ifndef QZLOG_COUNTER_RECORD_SCANNER_H
#define QZLOG_COUNTER_RECORD_SCANNER_H

#include <sys/types.h>

#include <cerrno>
#include <cstddef>

#include "counter/record_format.h"

namespace qzlog {

/// Repeats a transfer that a signal interrupted before anything was moved.
template <typename Transfer>
ssize_t uninterrupted(Transfer transfer) {
  ssize_t moved = 0;
  do {
    moved = transfer();
  } while (moved < 0 && errno == EINTR);
  return moved;
}

/// What came of reading at a position. Fewer bytes than wanted mean the end of the file, unless it failed behind them.
struct BytesRead {
  std::size_t size_bytes;
  bool failed;
};

/// Reads on until all is there that is wanted, the file ends or the system reports an error: it may give a part at a
/// time.
BytesRead read_at(int descriptor, long long position, unsigned char* target, std::size_t size_bytes);
/// Reads up to a record's bytes at a position; returns how many were there, or -1.
ssize_t read_record_bytes(int descriptor, long long position, RecordBytes& bytes);

}  // namespace qzlog

/// Where the record of a combination stands, or where a new one goes.
struct _qz_LOG_EntryCounterPlace {
  enum class Holds {
    kRecord,     // the record that was looked for
    kFree,       // a free record
    kEnd,        // nothing, or the piece of a record at the end of the file
    kUnreadable  // not known: the file could not be read
  };

  Holds holds;
  long long position;
  qzlog::CounterRecord record;  // what stands there: the record or the free one
};

namespace qzlog {

using RecordPlace = _qz_LOG_EntryCounterPlace;

/// Reads the records of a file from a position to its end, many at a time. A piece of a record at the end is not one.
class RecordScanner {
 public:
  RecordScanner(int descriptor, long long position);

  /// False at the end of the file.
  bool next() {
    index_ += counter_record::kSize;
    return index_ + counter_record::kSize <= size_ || read_block();
  }
  /// The current record's 32 bytes; valid until the next call of next().
  const unsigned char* bytes() const { return block_ + index_; }
  CounterRecord record() const { return decode_record(bytes()); }
  /// Whether the scan ended because the file, or its size, could not be read: what follows is then not the end.
  bool failed() const { return failed_; }
  /// The size of the file when the scan began; 0 for what has none, such as a device that would be read without end.
  long long end() const { return end_; }
  /// Where the current record stands; after the last one, where the next would.
  long long position() const { return block_position_ + index_; }

 private:
  bool read_block();

  static constexpr long long kBlockSize = 128LL * counter_record::kSize;

  int descriptor_;
  long long end_;
  long long block_position_;
  int index_ = -counter_record::kSize;
  int size_ = 0;
  bool failed_ = false;
  unsigned char block_[kBlockSize];
};

/// The first record with the date and key of `wanted`, else the first free one, else the end. The scanner is at the
/// start of the file.
RecordPlace scan_for_record(RecordScanner& scanner, const CounterRecord& wanted);
/// The first free record, else the end.
RecordPlace scan_for_free(RecordScanner& scanner);

}  // namespace qzlog

#endif  // QZLOG_COUNTER_RECORD_SCANNER_H
