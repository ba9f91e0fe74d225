#include "sinks/log_file.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "foundation/fork_gate.h"
#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

constexpr std::string_view kBeginning = "{\"writer\":\"";

/// A pipe without a reader is an error here and no signal: one that this thread gets meanwhile is taken back.
class NoPipeSignal : public qz_UTIL_no_inadvertant_copies {
 public:
  NoPipeSignal() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &former_);
  }
  ~NoPipeSignal() {
    const int error = errno;
    constexpr std::timespec kNoWait = {0, 0};
    if (!was_pending_) sigtimedwait(&pipe_, nullptr, &kNoWait);
    pthread_sigmask(SIG_SETMASK, &former_, nullptr);
    errno = error;
  }

 private:
  sigset_t pipe_;
  sigset_t former_;
  bool was_pending_;
};

/// Counts in what a write returned. False when it did not work; errno then has the reason.
bool count_in(ssize_t count, std::size_t& written) {
  if (count > 0) {
    written += static_cast<std::size_t>(count);
    return true;
  }
  if (count == 0) errno = ENOSPC;
  return count < 0 && errno == EINTR;
}

/// Writes what is left until something does not work any more. Returns how many bytes are written in all.
std::size_t write_while_possible(int file, std::string_view bytes, std::size_t written = 0) {
  while (written < bytes.size() && count_in(::write(file, bytes.data() + written, bytes.size() - written), written)) {
  }
  return written;
}

/// How many bytes stand behind the last line break; -1 with errno.
long long measure_rest(int file, std::uint64_t size) {
  constexpr std::size_t kBlock = 64U << 10;
  std::string block;
  std::uint64_t position = size;
  while (position > 0) {
    const std::size_t length = static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, position));
    block.resize(length);
    if (pread(file, block.data(), length, static_cast<off_t>(position - length)) != static_cast<ssize_t>(length)) {
      return -1;
    }
    const std::size_t line_break = block.rfind('\n');
    if (line_break != std::string::npos) return static_cast<long long>(size - (position - length) - line_break - 1);
    position -= length;
  }
  return static_cast<long long>(size);
}

bool is_ours(int file, std::uint64_t begin, std::uint64_t bytes) {
  char beginning[kBeginning.size()];
  const std::size_t length = static_cast<std::size_t>(std::min<std::uint64_t>(sizeof beginning, bytes));
  return pread(file, beginning, length, static_cast<off_t>(begin)) == static_cast<ssize_t>(length) &&
         kBeginning.substr(0, length) == std::string_view(beginning, length);
}

}  // namespace

FileIdentity identity_of(const struct stat& status) {
  return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

bool LogFile::open(const std::string& path, mode_t permissions) {
  const ForkDelay fork_delay;
  path_ = path;
  // A file that is deleted between open and flock is another one the next time.
  for (int attempt = 0; attempt < 10; ++attempt) {
    file_.reset(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, permissions));
    if (!file_) return false;
    struct stat status = {};
    if (fstat(file_.get(), &status) != 0) break;
    identity_ = identity_of(status);
    is_regular_ = S_ISREG(status.st_mode);
    // Who deletes old files leaves alone what is locked.
    if (!is_regular_ || (flock(file_.get(), LOCK_SH | LOCK_NB) == 0 && is_named())) return true;
  }
  const int error = errno;
  // Without locks, as on some network file systems, nothing is deleted either.
  if (file_ && is_named()) return true;
  file_.reset();
  errno = error;
  return false;
}

void LogFile::swap(LogFile& other) noexcept {
  file_.swap(other.file_);
  path_.swap(other.path_);
  std::swap(identity_, other.identity_);
  std::swap(is_regular_, other.is_regular_);
}

bool LogFile::get_size(std::uint64_t& size) const {
  struct stat status = {};
  if (fstat(file_.get(), &status) != 0 || identity_of(status) != identity_) return false;
  size = static_cast<std::uint64_t>(status.st_size);
  return true;
}

bool LogFile::is_named() const {
  struct stat status = {};
  return stat(path_.c_str(), &status) == 0 && identity_of(status) == identity_;
}

/// The first write returned `first_count`, which is not all.
std::size_t LogFile::append_rest(std::string_view lines, ssize_t first_count) const {
  std::size_t written = 0;
  return count_in(first_count, written) ? write_while_possible(file_.get(), lines, written) : written;
}

std::size_t LogFile::append_to_pipe(std::string_view lines, unsigned longest_wait_milliseconds) const {
  const NoPipeSignal no_signal;
  const long long deadline = SinkClock::steady_milliseconds() + longest_wait_milliseconds;
  std::size_t written = 0;
  while (true) {
    written += write_while_possible(file_.get(), lines.substr(written));
    if (written == lines.size() || errno != EAGAIN) return written;
    const long long left = deadline - SinkClock::steady_milliseconds();
    pollfd room = {file_.get(), POLLOUT, 0};
    if (left <= 0 || (poll(&room, 1, static_cast<int>(left)) < 0 && errno != EINTR)) break;
  }
  errno = EAGAIN;
  return written;
}

bool LogFile::cut(std::size_t bytes) const {
  std::uint64_t size = 0;
  return is_regular_ && get_size(size) && size >= bytes &&
         ftruncate(file_.get(), static_cast<off_t>(size - bytes)) == 0;
}

bool LogFile::sync() const {
  if (!is_regular_) return true;
  int result = 0;
  do {
    result = fdatasync(file_.get());
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

long long repair_end(const std::string& path, const FileIdentity& identity, bool may_cut) {
  const Descriptor file(::open(path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (!file || fstat(file.get(), &status) != 0) return -1;
  if (identity_of(status) != identity || !S_ISREG(status.st_mode)) return 0;
  const auto size = static_cast<std::uint64_t>(status.st_size);
  const long long rest = measure_rest(file.get(), size);
  if (rest <= 0) return rest;
  const std::uint64_t begin = size - static_cast<std::uint64_t>(rest);
  if (may_cut && is_ours(file.get(), begin, static_cast<std::uint64_t>(rest)) &&
      ftruncate(file.get(), static_cast<off_t>(begin)) == 0) {
    return rest;
  }
  return write_while_possible(file.get(), "\n") == 1 ? rest : -1;
}

}  // namespace qzlog
