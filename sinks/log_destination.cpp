#include "sinks/log_destination.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "foundation/fork_gate.h"
#include "qzlog/log_util.h"
#include "qzlog/qz_exception.h"
#include "sinks/sink_clock.h"
#include "util/debug_record.h"

namespace qzlog {

namespace {

constexpr const char* kSource = "log_destination";
/// After a failed open, so that writing entries does not become opening files.
constexpr long long kRetryMilliseconds = 20;

std::string folder_of(const qz_LOG_FileSinkSettings& settings) {
  if (!settings.prefix.empty()) return settings.folder;
  const std::size_t slash = settings.path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : settings.path.substr(0, slash);
}

std::string name_of(const qz_LOG_FileSinkSettings& settings) {
  return settings.prefix.empty() ? settings.path.substr(settings.path.rfind('/') + 1) : settings.prefix;
}

std::string lock_path(const std::string& folder, const std::string& hidden_name) {
  char name[256];
  get_plockname(hidden_name.c_str(), "lock", name);
  return folder + '/' + name;
}

/// What a step returns; false with errno when it finds no memory: it is tried again, as after other errors.
template <typename Step>
bool with_memory_or_not(Step step) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
  } catch (const QZX_memory_alloc&) {
    errno = ENOMEM;
  }
  return false;
}

}  // namespace

LogDestination::LogDestination(const qz_LOG_FileSinkSettings& settings)
    : settings_(settings),
      folder_(folder_of(settings)),
      hidden_name_('.' + name_of(settings)),
      series_(settings.folder, settings.prefix) {}

void LogDestination::open_lock() { lock_.open(lock_path(folder_, hidden_name_), settings_.file_permissions); }

void LogDestination::set_torn(const SeriesHold& hold, bool torn) {
  is_torn_ = torn;
  if (hold.page() != nullptr) hold.page()->is_torn = torn ? 1 : 0;
}

bool LogDestination::settle(const SeriesHold& hold, const std::timespec& now, std::size_t bytes) {
  if (hold.is_after_death() && file_.is_open()) {
    // Whoever was killed may have begun a file, too.
    if (!open_current(hold, now)) return false;
  }
  if (!file_.is_open() || is_replaced_by_others(hold)) {
    if (SinkClock::steady_milliseconds() < retry_open_) {
      errno = EAGAIN;
      return false;
    }
    if (!open_current(hold, now)) {
      const int error = errno;
      retry_open_ = SinkClock::steady_milliseconds() + kRetryMilliseconds;
      errno = error;
      return false;
    }
  }
  if (now.tv_sec != checked_ && !check_name(hold, now)) return false;
  // Where the next file cannot be had, the lines go to this one.
  if (is_due(hold, now, bytes) && !rotate(hold, now)) retry_rotation_ = now.tv_sec + 1;
  settled_ = now.tv_sec;
  return true;
}

bool LogDestination::is_due(const SeriesHold& hold, const std::timespec& now, std::size_t bytes) {
  if (!is_series() || now.tv_sec < retry_rotation_) return false;
  if (local_day_.number_of(now.tv_sec) > current_.day) return true;
  const std::uint64_t size_now = size(hold);
  if (settings_.largest_file_bytes == 0 || size_now == 0 || size_now + bytes <= settings_.largest_file_bytes)
    return false;
  if (current_.number < SeriesFile::kLastNumber) return true;
  tell_exhaustion();
  return false;
}

void LogDestination::tell_exhaustion() {
  if (counts_.numbers_exhausted.exchange(true)) return;
  QZ_DEBUG_RECORD(1, kSource, "%s:%d log_destination, %s takes the rest of its day: there is no number after 9999!\n",
                  file_.path().c_str());
}

/// At most once a second.
bool LogDestination::check_name(const SeriesHold& hold, const std::timespec& now) {
  checked_ = now.tv_sec;
  if (!file_.is_regular()) return true;
  std::uint64_t actual = 0;
  if (!file_.get_size(actual)) {
    file_.forget();
    ++counts_.reopened;
    return open_current(hold, now);
  }
  if (!file_.is_named()) {
    ++counts_.reopened;
    return open_current(hold, now);
  }
  if (actual < size(hold)) ++counts_.truncations;
  set_size(hold, actual);
  return true;
}

bool LogDestination::choose_file(const SeriesHold& hold, std::timespec now, SeriesFile& chosen) {
  if (!is_series()) return true;
  chosen = {local_day_.number_of(now.tv_sec), 1};
  if (const SeriesLock::Page* const page = hold.page()) chosen = std::max(chosen, {page->day, page->sequence});
  SeriesFile latest;
  if (!series_.find_latest(latest)) return false;
  chosen = std::max(chosen, latest);
  return true;
}

bool LogDestination::open_current(const SeriesHold& hold, std::timespec now) {
  return with_memory_or_not([&] { return open_latest(hold, now); });
}

bool LogDestination::open_latest(const SeriesHold& hold, std::timespec now) {
  const ForkDelay fork_delay;
  settled_ = kNever;
  SeriesFile place;
  int error = choose_file(hold, now, place) ? 0 : errno;
  std::string path = is_series() ? series_.path_of(place) : settings_.path;
  LogFile opened;
  if (error == 0 && opened.open(path, settings_.file_permissions)) return adopt(hold, opened, place);
  if (error == 0) error = errno;
  file_.close_for(std::move(path));
  errno = error;
  return false;
}

bool LogDestination::adopt(const SeriesHold& hold, LogFile& file, SeriesFile place) {
  const long long repaired = file.is_regular() ? repair_end(file.path(), file.identity(), hold.is_held()) : 0;
  if (repaired > 0) counts_.damaged += static_cast<unsigned long long>(repaired);
  // Whoever asks for what is in the file that is left means the next one by then.
  if (settings_.sync_level != qz_LOG_FileSinkSettings::kNever && is_unsynced_ && file_.is_open()) sync();
  file_.swap(file);
  current_ = place;
  set_torn(hold, false);
  if (SeriesLock::Page* const page = hold.page(); page != nullptr && is_series()) {
    page->day = place.day;
    page->sequence = place.number;
  }
  std::uint64_t actual = 0;
  if (!file_.get_size(actual)) return false;
  set_size(hold, file_.is_regular() ? actual : 0);
  return true;
}

/// By a line break.
bool LogDestination::close_fragment(const SeriesHold& hold) {
  if (file_.append("\n", settings_.longest_wait_milliseconds) != 1) return false;
  ++counts_.fragments;
  set_torn(hold, false);
  return true;
}

/// After a write that did not write all: the bytes of the whole lines among those that it wrote.
std::size_t LogDestination::cut_to_lines(const SeriesHold& hold, std::string_view written) {
  const int error = errno;
  const std::size_t whole = written.rfind('\n') + 1;  // npos + 1 is 0
  if (written.size() > whole && !end_fragment(hold, written.size() - whole)) set_torn(hold, true);
  errno = error;
  return whole;
}

/// Without the lock the part of a line is only cut off where nobody has written behind it.
bool LogDestination::end_fragment(const SeriesHold& hold, std::size_t bytes) {
  std::uint64_t actual = 0;
  if (!hold.is_held() && (!file_.get_size(actual) || actual != size_)) return false;
  if (!file_.cut(bytes)) return false;
  set_size(hold, size(hold) - bytes);
  return true;
}

bool LogDestination::reopen(const SeriesHold& hold, const std::timespec& now) {
  ++counts_.reopened;
  return open_current(hold, now);
}

bool LogDestination::rotate(const SeriesHold& hold, const std::timespec& now) {
  return is_series() && with_memory_or_not([&] { return begin_next_file(hold, now); });
}

bool LogDestination::begin_next_file(const SeriesHold& hold, const std::timespec& now) {
  if (!file_.is_open() || is_replaced_by_others(hold)) return open_current(hold, now);
  const unsigned today = local_day_.number_of(now.tv_sec);
  SeriesFile next = today > current_.day ? SeriesFile{today, 1} : SeriesFile{current_.day, current_.number + 1};
  if (next.number > SeriesFile::kLastNumber) {
    tell_exhaustion();
    return false;
  }
  const ForkDelay fork_delay;
  LogFile opened;
  if (!opened.open(series_.path_of(next), settings_.file_permissions)) return false;
  RotationWork::Task task{series_, settings_.sync_at_rotation ? file_.path() : "", settings_.keep_files,
                          settings_.keep_days, now.tv_sec};
  if (next.day != current_.day) counts_.numbers_exhausted = false;
  if (!adopt(hold, opened, next)) return false;
  ++counts_.rotations;
  opened.close();
  work_.start(std::move(task));
  return true;
}

bool LogDestination::sync() {
  is_unsynced_ = false;
  if (file_.sync()) return true;
  ++counts_.sync_failures;
  return false;
}

void LogDestination::abandon() noexcept {
  file_.close();
  lock_.close();
}

void LogDestination::close(unsigned longest_wait_milliseconds) {
  work_.wait(longest_wait_milliseconds);
  file_.close();
  lock_.close();
}

}  // namespace qzlog
