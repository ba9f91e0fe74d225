#include "tools/render/change_watch.h"

#include <poll.h>
#include <signal.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "tools/system/stop_signals.h"

namespace qzlog_tool {

namespace {

constexpr std::uint32_t kNewNames = IN_CREATE | IN_MOVED_TO;

/// poll, which a signal that asks for the end also ends where it came just before.
int poll_until_stop(pollfd* waited, nfds_t count, std::chrono::milliseconds time) noexcept {
  const sigset_t stop = StopSignals::all();
  sigset_t former = {};
  ::pthread_sigmask(SIG_BLOCK, &stop, &former);
  if (StopSignals::requested() != 0) time = {};
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const timespec limit = {seconds.count(), std::chrono::nanoseconds(time - seconds).count()};
  const int ready = ::ppoll(waited, count, &limit, &former);
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
  return ready;
}

}  // namespace

ChangeWatch::ChangeWatch(int output) noexcept : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), output_(output) {}

// By the descriptor: the name may lead to another file by now.
int ChangeWatch::watch_file(int descriptor) noexcept {
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  return ::inotify_add_watch(events_.get(), path.c_str(), IN_MODIFY);
}

void ChangeWatch::forget_file(int watch) noexcept {
  if (watch >= 0) ::inotify_rm_watch(events_.get(), watch);
}

void ChangeWatch::watch_folder(const std::string& path) noexcept {
  ::inotify_add_watch(events_.get(), path.empty() ? "." : path.c_str(), kNewNames | IN_ONLYDIR);
}

ChangeWatch::Change ChangeWatch::wait() noexcept {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next_look_ - Clock::now());
  pollfd waited[] = {{events_.get(), POLLIN, 0}, {output_, 0, 0}};
  const int ready = poll_until_stop(waited, 2, std::max(left, std::chrono::milliseconds(0)));
  Change change;
  if (ready > 0) {
    change.names = (waited[0].revents & POLLIN) != 0 && has_new_names();
    change.output_gone = (waited[1].revents & (POLLERR | POLLHUP)) != 0;
    if ((waited[1].revents & POLLNVAL) != 0) output_ = -1;  // it is closed: writing to it will say so
  }
  if (Clock::now() >= next_look_) {
    change.names = true;
    next_look_ = Clock::now() + kLongestWait;
  }
  return change;
}

// Events of files say only that there is something to be read.
bool ChangeWatch::has_new_names() noexcept {
  alignas(inotify_event) char buffer[16384];
  bool found = false;
  for (;;) {
    const ssize_t count = ::read(events_.get(), buffer, sizeof buffer);
    if (count <= 0) return found;
    for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
      inotify_event event = {};
      std::memcpy(&event, buffer + at, sizeof event);
      found = found || (event.mask & (kNewNames | IN_Q_OVERFLOW)) != 0;
      at += sizeof event + event.len;
    }
  }
}

}  // namespace qzlog_tool
