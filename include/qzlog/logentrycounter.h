#ifndef QZLOG_LOGENTRYCOUNTER_H
#define QZLOG_LOGENTRYCOUNTER_H

#include <cstdio>
#include <memory>
#include <vector>

#include "qzlog/export.h"
#include "qzlog/qz_string.h"
#include "qzlog/qz_time.h"

class _qz_LOG_EntryCounterIndex;
struct _qz_LOG_EntryCounterPlace;
struct _qz_LOG_EntryCounterStream;

/// One record of a counter file in host byte order. In the file it takes 32 bytes, every integer big-endian. A record
/// whose year, month and day are all 0 is free.
struct _qz_LOG_EntryCounterElement {
  int record_size;  ///< 32
  int year;
  int month;
  int day;
  int entry_key;  ///< chosen by the caller and only compared
  int count;
  int reserved[2];
};

/// For one thread of one process: several have qz_LOG_SharedCounter.
///
/// Counts per day and key in the file "DIRECTORY/NAME.cnt", a sequence of records that are rewritten in place and
/// reused when they are free.
///
/// The operations return 0 for success, and also when nothing was done because the file is not open or open for reading
/// only; -1 for a failure (a read or write failed, or the file was closed after it had been writable), the file then
/// being as it was. A record is written with one write, so a crash leaves it old or new; a piece of a record at the end
/// of the file is overwritten by the next record that is added there. Positions are kept in 32 bits: a record that
/// would lie at 2 GiB or behind is not added or incremented, the result is -1.
///
/// Counting costs the same however many records the file has: from about a hundred on, an index in memory (up to 24
/// bytes a record) tells where they stand. The file stays the truth. It is looked at in each operation, and what
/// another process did to it meanwhile counts, with one exception: a change to a record that the operation does not
/// read, in a file that keeps its size, made while an operation is under way, or through a shared memory mapping, or
/// where the file system tells times no better than by clock ticks (Linux before 6.13) in the tick of the change
/// before. Such a change is taken notice of with the next one, at the latest after as many searches for another key
/// than the one before as the file has records.
///
/// Not locked: one thread uses one counter, and one counter one file, at a time. Threads that share one lose counts.
class QZLOG_EXPORT _qz_LOG_EntryCounter {
 public:
  _qz_LOG_EntryCounter();
  ~_qz_LOG_EntryCounter();
  _qz_LOG_EntryCounter(const _qz_LOG_EntryCounter&) = delete;
  _qz_LOG_EntryCounter& operator=(const _qz_LOG_EntryCounter&) = delete;

  /// Opens the file, or creates it; always returns 0. A file that can only be read is opened for reading. When it
  /// cannot be created (or an argument is null) the counter is not opened. Both are told by IsOpen and IsWritable, and
  /// the second by a debug record of level 1 too. Whatever happens, what the file holds stays: a file that another
  /// process makes at the same time is opened as it is. The rights that count are those of the process's effective
  /// user. Slashes at the end of the directory are dropped, so "" and "/" are the root directory. A link is followed; a
  /// pipe is opened without waiting, and every operation on it fails. A stream of an earlier open stays open until the
  /// counter is destroyed. Throws QZX_logging_file_operation_failed "Cannot open file with read mode!\n" for a file
  /// that exists and cannot be read, and QZX_memory_alloc.
  int OpenEntryCounterFile(const char* directory, const char* name);

  /// Whether a file is open now: false before the first open, after one that got no file, and after a close.
  bool IsOpen() const { return file_ != nullptr; }
  /// Whether a file is open now and operations change it. False for one that is open for reading only: every operation
  /// then returns 0 and does nothing.
  bool IsWritable() const { return IsOpen() && is_writable(); }

  /// Adds 1 to the count of a day and key (modulo 2^32), creating it with 1. A call with the key of the call before
  /// increments that call's record even when the date differs: callers rely on it.
  int IncreaseCount(int year, int month, int day, int entry_key);
  /// Sets the count of a day and key, creating it if need be.
  int UpdateEntryCount(int year, int month, int day, int entry_key, int count);
  /// Frees the record of a day and key, if there is one.
  int DeleteEntryElement(int year, int month, int day, int entry_key);
  /// Frees every record from the stream's current position on whose year, month and day each lie in the range of the
  /// two times' years, months and days: a box, not an interval of dates. The position is the start of the file right
  /// after it was opened, else wherever the last operation ended. -1 when `from` is later than `to`.
  int DeleteEntryElement(const qz_Time& from, const qz_Time& to);
  /// Writes a record into the first free one or at the end. -1 for null.
  int addElement(_qz_LOG_EntryCounterElement* element);

  /// Closes the stream; always returns 0. Later operations return -1 when the file had been writable. Some file systems
  /// say only now that they could not keep what was written: who sets errno to 0 before then finds there why.
  int CloseEntryCounterFile();
  /// The open stream, unbuffered, or null. Owned by the counter.
  std::FILE* GetFilePointer() { return file_; }

 private:
  bool is_writable() const { return opened_ && writable_; }
  QZLOG_NO_EXPORT bool increase_last_record(int entry_key, int& result);
  QZLOG_NO_EXPORT int increase_record(const _qz_LOG_EntryCounterPlace& place);
  QZLOG_NO_EXPORT int add_record(const _qz_LOG_EntryCounterPlace& place, const _qz_LOG_EntryCounterElement& record);
  QZLOG_NO_EXPORT bool rewrite_record(const _qz_LOG_EntryCounterPlace& place,
                                      const _qz_LOG_EntryCounterElement& record);
  QZLOG_NO_EXPORT bool write_record(const _qz_LOG_EntryCounterPlace& place, const _qz_LOG_EntryCounterElement& record);
  QZLOG_NO_EXPORT void replace_file(_qz_LOG_EntryCounterStream&& stream);

  std::FILE* file_;
  qz_String directory_;
  qz_String counter_name_;
  int last_key_;
  int last_pos_;
  _qz_LOG_EntryCounterElement last_record_;
  bool writable_;
  bool opened_;
  bool has_last_record_;  // the record above was set: another operation may have set the position alone
  std::vector<std::FILE*> replaced_files_;
  std::unique_ptr<_qz_LOG_EntryCounterIndex> index_;  // null until searches were long
};

#endif  // QZLOG_LOGENTRYCOUNTER_H
