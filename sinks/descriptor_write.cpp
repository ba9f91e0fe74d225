#include "sinks/descriptor_write.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <string>

#include "foundation/no_copies.h"
#include "sinks/setting_checks.h"
#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

constexpr unsigned kMemoryDevices = 1;  // /dev/null and /dev/full

void refuse(int descriptor, const char* reason) {
  with_memory([&] { refuse_setting("descriptor", std::to_string(descriptor) + reason); });
}

/// Keeps from the program the signal that a pipe without a reader sends to the thread, whatever the program does with
/// it: its action and mask stay.
class PipeSignalDelay : public qz_UTIL_no_inadvertant_copies {
 public:
  PipeSignalDelay() noexcept {
    sigemptyset(&pipe_signal_);
    sigaddset(&pipe_signal_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_signal_, &before_);
    if (sigismember(&before_, SIGPIPE) == 0) return;
    // One that waits already is the program's.
    sigset_t waiting = {};
    sigpending(&waiting);
    is_programs_ = sigismember(&waiting, SIGPIPE) == 1;
  }
  ~PipeSignalDelay() {
    const int error = errno;
    if (was_sent_ && !is_programs_) {
      const std::timespec at_once = {};
      while (sigtimedwait(&pipe_signal_, nullptr, &at_once) < 0 && errno == EINTR) {
      }
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }
  void note_signal() { was_sent_ = true; }

 private:
  sigset_t pipe_signal_ = {};
  sigset_t before_ = {};
  bool is_programs_ = false;
  bool was_sent_ = false;
};

ssize_t write_to_pipe(int descriptor, std::string_view bytes) {
  PipeSignalDelay delay;
  const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
  if (written < 0 && errno == EPIPE) delay.note_signal();
  return written;
}

ssize_t write_once(int descriptor, StreamKind kind, std::string_view bytes) {
  if (kind == StreamKind::kSocket) return ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (kind == StreamKind::kPipe) return write_to_pipe(descriptor, bytes);
  return ::write(descriptor, bytes.data(), bytes.size());
}

bool makes_writers_wait(int descriptor) { return (::fcntl(descriptor, F_GETFL) & O_NONBLOCK) == 0; }

/// What is sure not to wait once there is room.
std::string_view next_piece(int descriptor, StreamKind kind, std::string_view bytes) {
  const bool is_short = kind != StreamKind::kPipe || bytes.size() <= PIPE_BUF;
  return is_short || !makes_writers_wait(descriptor) ? bytes : bytes.substr(0, PIPE_BUF);
}

/// Some sockets say that they have room when they have none.
void pause_shortly() {
  const std::timespec pause = {0, 1'000'000};
  nanosleep(&pause, nullptr);
}

/// Whether a write that failed with errno is to be tried again.
bool may_try_again(int descriptor, long long deadline, bool has_waited) {
  if (errno == EINTR) return SinkClock::steady_milliseconds() < deadline;
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  if (has_waited) pause_shortly();
  return wait_for_room(descriptor, deadline);
}

}  // namespace

StreamKind check_descriptor(int descriptor) {
  const int flags = ::fcntl(descriptor, F_GETFL);
  if (flags < 0) refuse(descriptor, " is not open");
  if ((flags & O_ACCMODE) == O_RDONLY || (flags & O_PATH) != 0) refuse(descriptor, " is not open for writing");
  return kind_of(descriptor);
}

StreamKind kind_of(int descriptor) noexcept {
  struct stat status = {};
  if (::fstat(descriptor, &status) != 0) return StreamKind::kFile;
  if (S_ISSOCK(status.st_mode)) return StreamKind::kSocket;
  if (S_ISFIFO(status.st_mode)) return StreamKind::kPipe;
  const bool always_takes = major(status.st_rdev) == kMemoryDevices;
  return S_ISCHR(status.st_mode) && !always_takes ? StreamKind::kTerminal : StreamKind::kFile;
}

bool wait_for_room(int descriptor, long long deadline) noexcept {
  pollfd place = {descriptor, POLLOUT, 0};
  for (;;) {
    const long long left = std::clamp(deadline - SinkClock::steady_milliseconds(), 0LL, 60'000LL);
    const int found = ::poll(&place, 1, static_cast<int>(left));
    if (found > 0) return true;
    if (found < 0 && errno != EINTR) return false;
    if (SinkClock::steady_milliseconds() < deadline) continue;
    errno = EAGAIN;
    return false;
  }
}

std::size_t write_to_descriptor(int descriptor, StreamKind kind, std::string_view bytes, long long deadline) noexcept {
  const bool may_lack_room = kind == StreamKind::kPipe || kind == StreamKind::kTerminal;
  std::size_t done = 0;
  bool has_waited = false;
  while (done < bytes.size()) {
    if (may_lack_room && !wait_for_room(descriptor, deadline)) break;
    const ssize_t written = write_once(descriptor, kind, next_piece(descriptor, kind, bytes.substr(done)));
    if (written > 0) {
      done += static_cast<std::size_t>(written);
      has_waited = false;
      continue;
    }
    if (written == 0) {
      errno = EIO;
      break;
    }
    if (!may_try_again(descriptor, deadline, has_waited)) break;
    has_waited = true;
  }
  return done;
}

}  // namespace qzlog
