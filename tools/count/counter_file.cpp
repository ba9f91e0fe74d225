#include "tools/count/counter_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "counter/record_layout.h"
#include "qzlog/qz_exception.h"
#include "qzlog/qz_time.h"
#include "tools/count/counter_reader.h"
#include "tools/report/passed_over.h"
#include "tools/system/command_error.h"
#include "tools/system/file_lock.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kSuffix = qzlog::counter_record::kFileSuffix;

[[noreturn]] void refuse_to_open(const std::string& file, const std::string& reason) {
  throw CommandError(kExitCannotRun, "cannot open '" + file + "' for writing: " + reason);
}

[[noreturn]] void refuse_to_count(const std::string& file, int error) {
  const std::string reason = error != 0 ? std::string(": ") + std::strerror(error) : "";
  throw CommandError(kExitCannotRun, "cannot write to '" + file + "'" + reason);
}

// For the lock, and for the reason when it cannot be opened, which the counter does not tell.
FileDescriptor open_for_writing(const std::string& file, MissingCounter missing) {
  int descriptor = open_path(file, O_RDWR | O_CLOEXEC);
  // Leave to make a file that is there would be refused in a folder that all users share.
  if (descriptor < 0 && errno == ENOENT && missing == MissingCounter::kCreate) {
    descriptor = open_path(file, O_RDWR | O_CLOEXEC | O_CREAT, 0666);
  }
  if (descriptor < 0) refuse_to_open(file, std::strerror(errno));
  FileDescriptor opened(descriptor);
  struct stat status = {};
  if (::fstat(descriptor, &status) != 0) refuse_to_open(file, std::strerror(errno));
  // A device may have no end, and a counter reads up to the end.
  if (!S_ISREG(status.st_mode)) refuse_to_open(file, "not a regular file");
  return opened;
}

int year_of(CalendarDay day) { return static_cast<int>(day.year()); }
int month_of(CalendarDay day) { return static_cast<int>(static_cast<unsigned>(day.month())); }
int day_of(CalendarDay day) { return static_cast<int>(static_cast<unsigned>(day.day())); }

qz_Time midnight(CalendarDay day) {
  qz_Time time;
  time.set_to_string_value((day_text(day) + " 00:00:00 GMT").c_str());
  return time;
}

}  // namespace

CounterPath parse_counter_path(const std::string& argument) {
  std::string stem = argument;
  if (stem.ends_with(kSuffix)) stem.resize(stem.size() - kSuffix.size());
  const std::size_t slash = stem.rfind('/');
  const std::size_t name_begin = slash == std::string::npos ? 0 : slash + 1;
  if (name_begin == stem.size()) {
    throw CommandError(kExitCannotRun, "'" + argument + "' names no counter; it is given as DIR/NAME");
  }
  const std::string directory = slash == std::string::npos ? "." : stem.substr(0, slash);
  return {directory, stem.substr(name_begin), stem + std::string(kSuffix)};
}

CounterFile::CounterFile(CounterPath path, MissingCounter missing)
    : path_(std::move(path)), lock_file_(open_for_writing(path_.file, missing)) {
  note_damage();
  open_counter();
}

// A counter passes over damaged records without a word, and writes over the part of one at the end.
void CounterFile::note_damage() const {
  const FileLock lock(lock_file_.get());
  const auto note = [this](const qzlog_compiler::Finding& damage) {
    passed_over().add_at("record", damage.rule.name(), path_.file, damage.offset.value_or(0));
  };
  read_counts(lock_file_.get(), path_.file, note, [](std::uint64_t) {});
}

void CounterFile::open_counter() {
  close_counter();
  counter_.emplace();
  try {
    counter_->OpenEntryCounterFile(path_.directory.c_str(), path_.name.c_str());
  } catch (const QZX_logging_file_operation_failed&) {
    // Not writable then, like one that could not be made; the library's words lack the name.
  }
  // It does nothing, quietly, with a file that it could open for reading only.
  if (!counter_->IsWritable()) throw CommandError(kExitCannotRun, "cannot open '" + path_.file + "' for writing");
}

void CounterFile::check(int result) const {
  if (result != 0) refuse_to_count(path_.file, errno);
}

void CounterFile::close() {
  close_counter();
  const int error = lock_file_.close();
  if (error != 0) refuse_to_count(path_.file, error);
}

// An interrupted close has closed.
void CounterFile::close_counter() {
  if (!counter_) return;
  errno = 0;
  counter_->CloseEntryCounterFile();
  if (errno != 0 && errno != EINTR) refuse_to_count(path_.file, errno);
}

void CounterFile::increase(CalendarDay day, std::int32_t key, std::uint64_t times) {
  if (times == 0) return;
  const FileLock lock(lock_file_.get());
  // A counter takes a call with the key of the call before for that call's day; a fresh one has no call before.
  if (last_increased_ && last_increased_->second == key && last_increased_->first != day) open_counter();
  last_increased_ = {day, key};
  errno = 0;
  for (; times > 0; --times) check(counter_->IncreaseCount(year_of(day), month_of(day), day_of(day), key));
}

void CounterFile::set(CalendarDay day, std::int32_t key, std::uint32_t count) {
  const FileLock lock(lock_file_.get());
  errno = 0;
  check(counter_->UpdateEntryCount(year_of(day), month_of(day), day_of(day), key, static_cast<std::int32_t>(count)));
}

void CounterFile::remove(CalendarDay day, std::int32_t key) {
  const FileLock lock(lock_file_.get());
  errno = 0;
  check(counter_->DeleteEntryElement(year_of(day), month_of(day), day_of(day), key));
}

// A range is deleted from the counter's current position on, which is the file's beginning after opening it.
void CounterFile::remove_box(CalendarDay from, CalendarDay to) {
  const FileLock lock(lock_file_.get());
  open_counter();
  errno = 0;
  check(counter_->DeleteEntryElement(midnight(from), midnight(to)));
}

}  // namespace qzlog_tool
