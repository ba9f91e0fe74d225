#include "qzlog/logentrycounter.h"

#include <climits>
#include <new>
#include <utility>

#include "counter/counter_stream.h"
#include "counter/logentrycounter_index.h"
#include "counter/record_format.h"
#include "counter/record_scanner.h"
#include "counter/record_store.h"
#include "foundation/qz_libc.h"
#include "qzlog/qz_exception.h"
#include "util/debug_record.h"

using namespace qzlog;

namespace {

using Element = _qz_LOG_EntryCounterElement;
using Holds = RecordPlace::Holds;

constexpr const char* kSource = "logentrycounter";

/// The free form of a record: only what is reserved stays; the size is written as it should be.
Element freed(const Element& record) {
  return {counter_record::kSize, 0, 0, 0, 0, 0, {record.reserved[0], record.reserved[1]}};
}

/// A file that is there and cannot even be read is an error. That one cannot be made is not: the counter then counts
/// nothing.
void report_not_opened(const char* path, bool exists) {
  if (!exists) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d Error: Cannot create file %s!\n", path);
    return;
  }
  QZ_DEBUG_RECORD(1, kSource, "%s:%d Error: Cannot open file %s with read mode!\n", path);
  throw QZX_logging_file_operation_failed("Cannot open file with read mode!\n", 0);
}

int report_seek_error() {
  QZ_DEBUG_RECORD(1, kSource, "%s:%d Seek error!\n");
  return -1;
}

qz_String counter_path(const char* directory, const char* name) {
  qz_String path;
  std::size_t length = QZ_strlen(directory);
  while (length > 0 && directory[length - 1] == '/') --length;
  path._assign(directory, static_cast<unsigned>(length));
  path += '/';
  path += name;
  path += counter_record::kFileSuffix;
  return path;
}

bool lies_between(int low, int value, int high) {
  return static_cast<short>(low) <= value && value <= static_cast<short>(high);
}

bool lies_in_box(const Element& record, const qz_Time& from, const qz_Time& to) {
  return lies_between(from.get_year(), record.year, to.get_year()) &&
         lies_between(from.get_month(), record.month, to.get_month()) &&
         lies_between(from.get_day(), record.day, to.get_day());
}

}  // namespace

_qz_LOG_EntryCounter::_qz_LOG_EntryCounter()
    : file_(nullptr),
      last_key_(-1),
      last_pos_(-1),
      last_record_(),
      writable_(false),
      opened_(false),
      has_last_record_(false) {}

_qz_LOG_EntryCounter::~_qz_LOG_EntryCounter() {
  CloseEntryCounterFile();
  for (std::FILE* const file : replaced_files_) QZ_fclose(file);
}

int _qz_LOG_EntryCounter::OpenEntryCounterFile(const char* directory, const char* name) {
  if (directory == nullptr || name == nullptr) {
    replace_file({});
    opened_ = false;
    QZ_DEBUG_RECORD(1, kSource, "%s:%d _qz_LOG_EntryCounter::OpenEntryCounterFile, directory==0 or name==0!\n");
    return 0;
  }
  const qz_String path = counter_path(directory, name);
  CounterStream stream = open_counter_stream(path.c_str());
  const bool exists = stream.exists;
  replace_file(std::move(stream));
  if (file_ == nullptr) report_not_opened(path.c_str(), exists);
  directory_ = qz_String(directory);
  counter_name_ = qz_String(name);
  return 0;
}

/// The stream before stays open: its user may have got it from GetFilePointer.
void _qz_LOG_EntryCounter::replace_file(CounterStream&& stream) {
  try {
    if (file_ != nullptr) replaced_files_.push_back(file_);
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
  index_.reset();
  file_ = stream.file.release();
  opened_ = stream.exists;
  writable_ = stream.is_writable;
}

int _qz_LOG_EntryCounter::IncreaseCount(int year, int month, int day, int entry_key) {
  if (!is_writable()) return 0;
  if (file_ == nullptr) return -1;
  int result = 0;
  if (increase_last_record(entry_key, result)) return result;

  const Element record = {counter_record::kSize, year, month, day, entry_key, 1, {0, 0}};
  const RecordPlace place = find_record(fileno(file_), index_, record);
  if (place.holds == Holds::kUnreadable) return report_seek_error();
  if (place.holds == Holds::kRecord) return increase_record(place);
  if (add_record(place, record) != 0) return -1;
  last_key_ = entry_key;
  last_record_ = record;
  has_last_record_ = true;
  return 0;
}

/// False when the record that was touched last is not the one, or not there any more. Only the key is compared with the
/// caller's: a call with the key of the call before counts for that call's day.
bool _qz_LOG_EntryCounter::increase_last_record(int entry_key, int& result) {
  if (!has_last_record_ || entry_key != last_key_ || last_pos_ == -1) return false;
  RecordBytes bytes;
  if (read_record_bytes(fileno(file_), last_pos_, bytes) != counter_record::kSize) return false;
  const RecordPlace place = {Holds::kRecord, last_pos_, decode_record(bytes.data())};
  if (!is_same_combination(place.record, last_record_)) return false;
  Element record = place.record;
  record.count = count_more(record.count, 1);
  result = rewrite_record(place, record) ? 0 : report_seek_error();
  return true;
}

int _qz_LOG_EntryCounter::increase_record(const RecordPlace& place) {
  if (place.position > INT_MAX) return -1;
  Element record = place.record;
  record.count = count_more(record.count, 1);
  if (!write_record(place, record)) return report_seek_error();
  last_pos_ = static_cast<int>(place.position);
  last_key_ = record.entry_key;
  last_record_ = record;
  has_last_record_ = true;
  return 0;
}

int _qz_LOG_EntryCounter::UpdateEntryCount(int year, int month, int day, int entry_key, int count) {
  if (!is_writable()) return 0;
  if (file_ == nullptr) return -1;
  Element record = {counter_record::kSize, year, month, day, entry_key, count, {0, 0}};
  const RecordPlace place = find_record(fileno(file_), index_, record);
  if (place.holds == Holds::kUnreadable) return report_seek_error();
  if (place.holds != Holds::kRecord) return add_record(place, record);
  record = place.record;
  record.count = count;
  return write_record(place, record) ? 0 : report_seek_error();
}

int _qz_LOG_EntryCounter::DeleteEntryElement(int year, int month, int day, int entry_key) {
  if (!is_writable()) return 0;
  if (file_ == nullptr) return -1;
  const Element wanted = {counter_record::kSize, year, month, day, entry_key, 0, {0, 0}};
  const RecordPlace place = find_record(fileno(file_), index_, wanted);
  if (place.holds == Holds::kUnreadable) return report_seek_error();
  if (place.holds != Holds::kRecord) {
    QZ_fseek(file_, 0, SEEK_END);
    return 0;
  }
  return write_record(place, freed(place.record)) ? 0 : report_seek_error();
}

int _qz_LOG_EntryCounter::DeleteEntryElement(const qz_Time& from, const qz_Time& to) {
  if (!is_writable()) return 0;
  if (file_ == nullptr || from.compare_time(to) > 0) return -1;
  // From where the last operation left the stream: records before it are not looked at.
  const long long start = QZ_ftell(file_);
  if (start < 0) return report_seek_error();
  RecordScanner scanner(fileno(file_), start);
  while (scanner.next()) {
    const RecordPlace place = {Holds::kRecord, scanner.position(), scanner.record()};
    if (is_free_record(place.record) || !lies_in_box(place.record, from, to)) continue;
    if (!rewrite_record(place, freed(place.record))) return report_seek_error();
  }
  if (scanner.failed()) return report_seek_error();
  // A position behind the end, in a file that was cut since, stays where it is.
  if (start < scanner.end()) QZ_fseek(file_, 0, SEEK_END);
  return 0;
}

int _qz_LOG_EntryCounter::addElement(Element* element) {
  if (!is_writable()) return 0;
  if (file_ == nullptr || element == nullptr) return -1;
  const RecordPlace place = find_free(fileno(file_), index_);
  return place.holds == Holds::kUnreadable ? report_seek_error() : add_record(place, *element);
}

/// `place` is the first free record or the end.
int _qz_LOG_EntryCounter::add_record(const RecordPlace& place, const Element& record) {
  if (place.position > INT_MAX) return -1;
  if (!write_record(place, record)) return report_seek_error();
  last_pos_ = static_cast<int>(place.position);
  return 0;
}

int _qz_LOG_EntryCounter::CloseEntryCounterFile() {
  index_.reset();
  // Last, so that errno is that of the close.
  if (std::FILE* const file = std::exchange(file_, nullptr)) QZ_fclose(file);
  return 0;
}

/// To a place that no search has found just now.
bool _qz_LOG_EntryCounter::rewrite_record(const RecordPlace& place, const Element& record) {
  if (index_ != nullptr) index_->expect_write(fileno(file_));
  return write_record(place, record);
}

/// Leaves the stream behind the record, or at it when it cannot be written. A stream that cannot be positioned is an
/// error while nothing is written yet.
bool _qz_LOG_EntryCounter::write_record(const RecordPlace& place, const Element& record) {
  if (QZ_fseek(file_, place.position + counter_record::kSize, SEEK_SET) != 0) return false;
  if (qzlog::write_record(fileno(file_), index_, place, record)) return true;
  QZ_fseek(file_, place.position, SEEK_SET);
  return false;
}
