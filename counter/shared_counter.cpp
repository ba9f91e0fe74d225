#include "qzlog/shared_counter.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>

#include "counter/counter_stream.h"
#include "counter/record_store.h"
#include "foundation/descriptor.h"
#include "foundation/locks.h"
#include "foundation/no_copies.h"
#include "qzlog/qz_exception.h"
#include "qzlog/qz_time.h"

using namespace qzlog;

namespace {

using Holds = RecordPlace::Holds;

/// Against other open files of the same name, of this process and of others. Where the file system has no locks there
/// is none.
class FileLock : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit FileLock(int descriptor) noexcept : descriptor_(descriptor) {
    while (flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  ~FileLock() { flock(descriptor_, LOCK_UN); }

 private:
  int descriptor_;
};

/// Absolute: the program may change its working directory.
std::string counter_path(const char* directory, const char* name) {
  if (directory == nullptr || name == nullptr) throw QZX_logging_illegal_argument("invalid argument", 0);
  std::string path = directory;
  path.erase(path.find_last_not_of('/') + 1);
  path += '/';
  path += name;
  path += counter_record::kFileSuffix;
  std::error_code failure;
  const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
  return failure ? path : absolute.string();
}

void require_day(int year, int month, int day) {
  const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day)));
  constexpr int kMostYear = 9999;
  if (year < 1 || year > kMostYear || month < 1 || month > 12 || day < 1 || day > 31 || !date.ok()) {
    throw QZX_logging_illegal_argument("invalid argument: no day of the years 1 to 9999", 0);
  }
}

}  // namespace

class qz_LOG_SharedCounter::Implementation : public qz_UTIL_no_inadvertant_copies {
 public:
  Implementation(const char* directory, const char* name) : path_(counter_path(directory, name)) { open(); }

  static Implementation* make(const char* directory, const char* name) try {
    return new Implementation(directory, name);
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }

  void increase(const CounterRecord& counted) {
    const MutexSentry lock(mutex_);
    // A lock belongs to the open file, which a process has in common with those that it forks.
    if (opener_ != getpid()) open();
    for (int i = 0; i < kMostReplacements; ++i) {
      if (add_at_path(counted)) return;
      open();
    }
    fail("write to", EBUSY);
  }
  const char* path() const { return path_.c_str(); }

 private:
  // A file that is replaced all the time is not waited for without end.
  static constexpr int kMostReplacements = 100;

  void open() {
    Descriptor opened(open_counter_for_update(path_.c_str()));
    struct stat status {};
    if (!opened || fstat(opened.get(), &status) != 0) fail("open", errno);
    // A device may have no end, and a counter reads up to the end.
    if (!S_ISREG(status.st_mode)) fail("open", EINVAL);
    file_.swap(opened);
    index_.reset();
    opener_ = getpid();
  }

  /// False when another file has the name now, or none: who replaces the file may do so up to when it is locked.
  bool add_at_path(const CounterRecord& counted) {
    const FileLock lock(file_.get());
    if (!is_at_path()) return false;
    add(counted);
    return true;
  }

  bool is_at_path() const {
    struct stat opened {};
    struct stat named {};
    return fstat(file_.get(), &opened) == 0 && stat(path_.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
  }

  void add(const CounterRecord& counted) {
    errno = 0;
    RecordPlace place = find_record(file_.get(), index_, counted);
    // What an index has not noticed yet, a search for a record that is not there would add a second time.
    if (place.holds != Holds::kRecord && index_ != nullptr) place = scan_for_record(file_.get(), index_, counted);
    if (place.holds == Holds::kUnreadable) fail("read", errno);
    CounterRecord record = counted;
    if (place.holds == Holds::kRecord) {
      record = place.record;
      record.count = count_more(record.count, static_cast<unsigned>(counted.count));
    }
    // As far as _qz_LOG_EntryCounter counts.
    if (place.position > INT_MAX) fail("write to", EFBIG);
    if (!write_record(file_.get(), index_, place, record)) fail("write to", errno);
  }

  [[noreturn]] void fail(const char* what, int error) const {
    char room[128];
    std::string text = std::string("cannot ") + what + " '" + path_ + "'";
    if (error != 0) text += std::string(": ") + strerror_r(error, room, sizeof room);
    throw QZX_logging_file_operation_failed(text.c_str(), 0);
  }

  const std::string path_;
  Mutex mutex_;  // of what follows
  Descriptor file_;
  CounterIndexPointer index_;
  pid_t opener_ = 0;
};

qz_LOG_SharedCounter::qz_LOG_SharedCounter(const char* directory, const char* name)
    : implementation_(Implementation::make(directory, name)) {}

qz_LOG_SharedCounter::~qz_LOG_SharedCounter() { delete implementation_; }

void qz_LOG_SharedCounter::Increase(int year, int month, int day, int entry_key, unsigned int times) try {
  require_day(year, month, day);
  if (times == 0) return;
  implementation_->increase({counter_record::kSize, year, month, day, entry_key, static_cast<int>(times), {0, 0}});
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

void qz_LOG_SharedCounter::IncreaseToday(int entry_key, unsigned int times) {
  qz_Time now = qz_Time::now();
  now.GMT_to_local();
  Increase(now.get_year(), now.get_month(), now.get_day(), entry_key, times);
}

const char* qz_LOG_SharedCounter::GetPath() const { return implementation_->path(); }
