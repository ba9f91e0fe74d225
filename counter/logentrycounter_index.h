#ifndef QZLOG_COUNTER_LOGENTRYCOUNTER_INDEX_H
#define QZLOG_COUNTER_LOGENTRYCOUNTER_INDEX_H

#include <optional>

#include "counter/file_stamp.h"
#include "counter/record_index.h"
#include "counter/record_scanner.h"

/// Answers a counter's searches from memory, so that they cost the same however many records the file has. The file
/// stays the truth: each answer is what a scan would find, or there is none and the counter scans.
///
/// Others may change the file. Before each use its stamp is compared with what it was after the last own write; with
/// another one, and when a record that is read on the way is not the expected one, the index is dropped. Where a file
/// system gives each change that comes after a look at the times a time of its own (Linux 6.13 and later on ext4, xfs,
/// btrfs and tmpfs), this tells of every change but those
/// - that fall in between the two looks at the stamp of one own operation, or
/// - that are stores to a shared memory mapping, which the times tell of only once for each page written back.
/// Elsewhere the times advance with a clock of 1 to 10 ms (of seconds on some file systems), and they do not tell
/// either of a change
/// - within the same tick as the last change known.
/// Even then a change is noticed at once if it changes the size of the file, or the record that is found, or the place
/// where a new one goes: the first free record or the end, looked at also before saying that there is no such record.
/// Any other is noticed with the next one that the times tell of, at the latest after as many searches as the file has
/// records, for then the index is made again. A block of the file that cannot be read any more is noticed by the
/// operations that have to read it.
///
/// Making the index costs some scans. It is made when so much has been scanned since it was last dropped that it pays
/// even if it is dropped at once, and not for small files. Without memory there is none. Never throws.
class _qz_LOG_EntryCounterIndex {
 public:
  static bool is_worthwhile(long long file_size) { return file_size >= kMinRecords * qzlog::counter_record::kSize; }

  /// What scan_for_record would find, or nothing: then the counter has to scan.
  std::optional<qzlog::RecordPlace> find_record(int descriptor, const qzlog::CounterRecord& wanted);
  /// What scan_for_free would find.
  std::optional<qzlog::RecordPlace> find_free(int descriptor);
  /// Comes after a scan from the start of the file, when there was no answer.
  void scanned(int descriptor, const qzlog::RecordScanner& scanner);

  /// Comes before a write that no search preceded.
  void expect_write(int descriptor);
  /// Comes after each write.
  void written(int descriptor, long long position, const qzlog::RecordBytes& bytes);
  void drop();

 private:
  static constexpr long long kMinRecords = 128;
  static constexpr long long kMaxRecords = 1LL << 23;
  static_assert(kMaxRecords <= qzlog::RecordIndex::kCapacity);

  bool is_usable(int descriptor);
  bool is_current(int descriptor);
  bool make(int descriptor);
  bool read_records(int descriptor);
  std::optional<qzlog::RecordPlace> place_for_new(int descriptor);
  bool read_expected(int descriptor, std::uint32_t number, qzlog::RecordBytes& bytes);

  qzlog::RecordIndex records_;
  qzlog::FileStamp stamp_;  // after the last own write
  bool is_valid_ = false;   // the records are those of a file with this stamp
  long long searches_ = 0;  // since the index was made
  long long rewrites_ = 0;  // since the last search

  long long scanned_records_ = 0;  // since the index was dropped
  long long file_records_ = 0;     // when it was scanned last
};

#endif  // QZLOG_COUNTER_LOGENTRYCOUNTER_INDEX_H
