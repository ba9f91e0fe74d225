#include "qzlog/logentrycounter.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <new>

#include "foundation/qz_libc.h"
#include "qzlog/qz_exception.h"
#include "util/debug_record.h"

namespace {

using Element = _qz_LOG_EntryCounterElement;

constexpr const char* kSource = "logentrycounter";
constexpr int kRecordSize = 32;
constexpr int kFieldCount = 6;  // before the reserved bytes
static_assert(sizeof(Element) == kRecordSize);

using RecordBytes = unsigned char[kRecordSize];

void encode(const Element& record, RecordBytes& bytes) {
  const int fields[kFieldCount] = {record.record_size, record.year,      record.month,
                                   record.day,         record.entry_key, record.count};
  unsigned char* byte = bytes;
  for (const int field : fields) {
    const auto value = static_cast<unsigned>(field);
    for (int shift = 24; shift >= 0; shift -= 8) *byte++ = static_cast<unsigned char>(value >> shift & 0xFF);
  }
  // What is reserved has no meaning, so no byte order either.
  QZ_memcpy(byte, record.reserved, sizeof(record.reserved));
}

Element decode(const unsigned char* bytes) {
  int fields[kFieldCount];
  for (int& field : fields) {
    unsigned value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | *bytes++;
    field = static_cast<int>(value);
  }
  Element record = {fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], {0, 0}};
  QZ_memcpy(record.reserved, bytes, sizeof(record.reserved));
  return record;
}

bool is_free(const Element& record) { return record.year == 0 && record.month == 0 && record.day == 0; }

bool is_same(const Element& left, const Element& right) {
  return left.year == right.year && left.month == right.month && left.day == right.day &&
         left.entry_key == right.entry_key;
}

/// The free form of a record: only what is reserved stays; the size is written as it should be.
Element freed(const Element& record) { return {kRecordSize, 0, 0, 0, 0, 0, {record.reserved[0], record.reserved[1]}}; }

int incremented(int count) { return static_cast<int>(static_cast<unsigned>(count) + 1U); }

/// Repeats a transfer that a signal interrupted before anything was moved.
template <typename Transfer>
ssize_t uninterrupted(Transfer transfer) {
  ssize_t moved = 0;
  do {
    moved = transfer();
  } while (moved < 0 && errno == EINTR);
  return moved;
}

/// The size of a file; 0 for what has none, such as a device that would be read without end.
long long file_size(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) == 0 ? static_cast<long long>(status.st_size) : 0;
}

/// Reads the records of a file from a position to its end, many at a time. A piece of a record at the end is not one.
class RecordScanner {
 public:
  RecordScanner(std::FILE* file, long long position)
      : descriptor_(fileno(file)), end_(file_size(descriptor_)), block_position_(position) {}

  /// False at the end of the file.
  bool next() {
    index_ += kRecordSize;
    if (index_ + kRecordSize > size_ && !read_block()) return false;
    record_ = decode(block_ + index_);
    return true;
  }
  const Element& record() const { return record_; }
  /// Whether the scan ended because the file could not be read: what follows is then not the end.
  bool failed() const { return failed_; }
  /// The size of the file when the scan began.
  long long end() const { return end_; }
  /// Where the current record stands; after the last one, where the next would.
  long long position() const { return block_position_ + index_; }

 private:
  bool read_block() {
    block_position_ += index_ > 0 ? index_ : 0;
    index_ = 0;
    const auto wanted = static_cast<std::size_t>(std::clamp(end_ - block_position_, 0LL, kBlockSize));
    const ssize_t moved =
        uninterrupted([&] { return pread(descriptor_, block_, wanted, static_cast<off_t>(block_position_)); });
    failed_ = moved < 0;
    size_ = failed_ ? 0 : static_cast<int>(moved);
    return size_ >= kRecordSize;
  }

  static constexpr long long kBlockSize = 128LL * kRecordSize;

  int descriptor_;
  long long end_;
  long long block_position_;
  int index_ = -kRecordSize;
  int size_ = 0;
  bool failed_ = false;
  Element record_ = {};
  unsigned char block_[kBlockSize];
};

/// Moves to the first record for which `wanted` is true; false, at the end of the records, when there is none.
template <typename Wanted>
bool scan_for(RecordScanner& scanner, Wanted wanted) {
  while (scanner.next()) {
    if (wanted(scanner.record())) return true;
  }
  return false;
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
  path += ".cnt";
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
    replace_file(nullptr);
    opened_ = false;
    return 0;
  }
  const qz_String path = counter_path(directory, name);
  if (access(path.c_str(), F_OK) == 0) {
    opened_ = true;
    replace_file(QZ_fopen(path.c_str(), "rb+"));
    writable_ = file_ != nullptr;
    if (!writable_) replace_file(QZ_fopen(path.c_str(), "rb"));
    if (file_ == nullptr) {
      QZ_DEBUG_RECORD(1, kSource, "%s:%d Error: Cannot open file %s with read mode!\n", path.c_str());
      throw QZX_logging_file_operation_failed("Cannot open file with read mode!\n", 0);
    }
  } else {
    replace_file(QZ_fopen(path.c_str(), "wb+"));
    opened_ = file_ != nullptr;
    if (opened_) writable_ = true;
  }
  directory_ = qz_String(directory);
  counter_name_ = qz_String(name);
  return 0;
}

/// The stream before stays open: its user may have got it from GetFilePointer.
void _qz_LOG_EntryCounter::replace_file(std::FILE* file) {
  // Positions are those of the file itself, and what is written is written at once.
  if (file != nullptr) std::setvbuf(file, nullptr, _IONBF, 0);
  try {
    if (file_ != nullptr) replaced_files_.push_back(file_);
  } catch (const std::bad_alloc&) {
    if (file != nullptr) QZ_fclose(file);
    throw QZX_memory_alloc();
  }
  file_ = file;
}

int _qz_LOG_EntryCounter::IncreaseCount(int year, int month, int day, int entry_key) {
  if (!is_writable()) return 0;
  if (file_ == nullptr) return -1;
  int result = 0;
  if (increase_last_record(entry_key, result)) return result;

  Element record = {kRecordSize, year, month, day, entry_key, 1, {0, 0}};
  RecordScanner scanner(file_, 0);
  if (scan_for(scanner, [&](const Element& other) { return is_same(other, record); })) {
    record = scanner.record();
    return increase_record(scanner.position(), record);
  }
  if (scanner.failed()) return report_seek_error();
  if (addElement(&record) != 0) return -1;
  last_key_ = entry_key;
  last_record_ = record;
  has_last_record_ = true;
  return 0;
}

/// False when the record that was touched last is not the one, or not there any more. Only the key is compared with the
/// caller's: a call with the key of the call before counts for that call's day.
bool _qz_LOG_EntryCounter::increase_last_record(int entry_key, int& result) {
  if (!has_last_record_ || entry_key != last_key_ || last_pos_ == -1) return false;
  Element record;
  if (!read_record(last_pos_, record) || !is_same(record, last_record_)) return false;
  record.count = incremented(record.count);
  result = write_record(last_pos_, record) ? 0 : report_seek_error();
  return true;
}

int _qz_LOG_EntryCounter::increase_record(long long position, Element& record) {
  if (position > INT_MAX) return -1;
  record.count = incremented(record.count);
  if (!write_record(position, record)) return report_seek_error();
  last_pos_ = static_cast<int>(position);
  last_key_ = record.entry_key;
  last_record_ = record;
  has_last_record_ = true;
  return 0;
}

int _qz_LOG_EntryCounter::UpdateEntryCount(int year, int month, int day, int entry_key, int count) {
  if (!is_writable()) return 0;
  if (file_ == nullptr) return -1;
  Element record = {kRecordSize, year, month, day, entry_key, count, {0, 0}};
  RecordScanner scanner(file_, 0);
  const bool found = scan_for(scanner, [&](const Element& other) { return is_same(other, record); });
  if (scanner.failed()) return report_seek_error();
  if (!found) return addElement(&record);
  record = scanner.record();
  record.count = count;
  return write_record(scanner.position(), record) ? 0 : report_seek_error();
}

int _qz_LOG_EntryCounter::DeleteEntryElement(int year, int month, int day, int entry_key) {
  if (!is_writable()) return 0;
  if (file_ == nullptr) return -1;
  const Element wanted = {kRecordSize, year, month, day, entry_key, 0, {0, 0}};
  RecordScanner scanner(file_, 0);
  const bool found = scan_for(scanner, [&](const Element& other) { return is_same(other, wanted); });
  if (scanner.failed()) return report_seek_error();
  if (!found) {
    QZ_fseek(file_, 0, SEEK_END);
    return 0;
  }
  return write_record(scanner.position(), freed(scanner.record())) ? 0 : report_seek_error();
}

int _qz_LOG_EntryCounter::DeleteEntryElement(const qz_Time& from, const qz_Time& to) {
  if (!is_writable()) return 0;
  if (file_ == nullptr || from.compare_time(to) > 0) return -1;
  // From where the last operation left the stream: records before it are not looked at.
  const long long start = QZ_ftell(file_);
  if (start < 0) return report_seek_error();
  RecordScanner scanner(file_, start);
  while (scanner.next()) {
    if (is_free(scanner.record()) || !lies_in_box(scanner.record(), from, to)) continue;
    if (!write_record(scanner.position(), freed(scanner.record()))) return report_seek_error();
  }
  if (scanner.failed()) return report_seek_error();
  // A position behind the end, in a file that was cut since, stays where it is.
  if (start < scanner.end()) QZ_fseek(file_, 0, SEEK_END);
  return 0;
}

int _qz_LOG_EntryCounter::addElement(Element* element) {
  if (!is_writable()) return 0;
  if (file_ == nullptr || element == nullptr) return -1;
  RecordScanner scanner(file_, 0);
  // Without a free record the position is that of the end, or of the piece of a record there.
  scan_for(scanner, is_free);
  if (scanner.failed()) return report_seek_error();
  const long long position = scanner.position();
  if (position > INT_MAX) return -1;
  if (!write_record(position, *element)) return report_seek_error();
  last_pos_ = static_cast<int>(position);
  return 0;
}

int _qz_LOG_EntryCounter::CloseEntryCounterFile() {
  if (file_ != nullptr) QZ_fclose(file_);
  file_ = nullptr;
  return 0;
}

bool _qz_LOG_EntryCounter::read_record(long long position, Element& record) const {
  RecordBytes bytes;
  const ssize_t moved =
      uninterrupted([&] { return pread(fileno(file_), bytes, sizeof(bytes), static_cast<off_t>(position)); });
  if (moved != kRecordSize) return false;
  record = decode(bytes);
  return true;
}

/// Writes a record with one write and leaves the stream behind it. A record that was written in part, on a full disk,
/// is taken back.
bool _qz_LOG_EntryCounter::write_record(long long position, const Element& record) {
  if (QZ_fseek(file_, position, SEEK_SET) != 0) return false;
  RecordBytes former;
  RecordBytes bytes;
  const int descriptor = fileno(file_);
  const auto offset = static_cast<off_t>(position);
  const ssize_t former_size = uninterrupted([&] { return pread(descriptor, former, sizeof(former), offset); });
  encode(record, bytes);
  const ssize_t written = uninterrupted([&] { return pwrite(descriptor, bytes, sizeof(bytes), offset); });
  if (written == kRecordSize) return QZ_fseek(file_, position + kRecordSize, SEEK_SET) == 0;
  if (written > 0) {
    if (former_size == kRecordSize) {
      uninterrupted([&] { return pwrite(descriptor, former, sizeof(former), offset); });
    } else {
      uninterrupted([&] { return ssize_t{ftruncate(descriptor, offset)}; });
    }
  }
  return false;
}
