#include "sinks/syslog_connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

using Settings = qz_LOG_SyslogSinkSettings;

constexpr long long kFirstPause = 100;
/// The local service is back soon when it is started again.
constexpr long long kLongestLocalPause = 1000;
constexpr long long kLongestConnecting = 10'000;
/// What the other side does not confirm for so long has no connection any more.
constexpr unsigned kLongestUnconfirmed = 30'000;

std::string error_text(int error) {
  char room[128];
  return strerror_r(error, room, sizeof room);
}

SocketAddress local_address(const std::string& path) {
  SocketAddress address;
  sockaddr_un local = {};
  local.sun_family = AF_UNIX;
  std::memcpy(local.sun_path, path.c_str(), path.size() + 1);
  std::memcpy(&address.storage, &local, sizeof local);
  address.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size() + 1);
  return address;
}

/// Where these do not work the connection is as good as without them.
void keep_alive(int socket) {
  const int on = 1;
  const unsigned unconfirmed = kLongestUnconfirmed;
  static_cast<void>(setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on));
  static_cast<void>(setsockopt(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &unconfirmed, sizeof unconfirmed));
}

int error_of(int socket) {
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

}  // namespace

SyslogConnection::SyslogConnection(const Settings& settings, LostMessages& lost) : settings_(settings), lost_(lost) {
  if (is_tcp()) sent_.reserve();
}

bool SyslogConnection::open(long long deadline) {
  while (state_ != State::kUp) {
    switch (state_) {
      case State::kDown:
        if (SinkClock::steady_milliseconds() < next_attempt_) return false;
        begin_attempt();
        break;
      case State::kLookingUp:
        if (!finish_lookup(deadline)) return false;
        break;
      default:
        if (!finish_connecting(deadline)) return false;
    }
  }
  return true;
}

void SyslogConnection::begin_attempt() {
  if (settings_.transport == Settings::kLocal) {
    addresses_.assign(1, local_address(settings_.path));
    next_address_ = 0;
    return try_next_address();
  }
  lookup_.begin(settings_.host, settings_.port, is_tcp() ? SOCK_STREAM : SOCK_DGRAM);
  state_ = State::kLookingUp;
}

/// False when it is not done in time.
bool SyslogConnection::finish_lookup(long long deadline) {
  if (!lookup_.wait(deadline)) {
    is_stalled_ = true;
    return false;
  }
  state_ = State::kDown;
  HostLookup::Found found = lookup_.take();
  addresses_.swap(found.addresses);
  next_address_ = 0;
  if (addresses_.empty()) {
    fail_attempt(found.failure);
  } else {
    try_next_address();
  }
  return true;
}

void SyslogConnection::try_next_address() {
  int error = 0;
  state_ = State::kDown;
  while (next_address_ < addresses_.size()) {
    error = start_connecting(addresses_[next_address_++]);
    if (error == 0) return take_up();
    if (error != EINPROGRESS) continue;
    state_ = State::kConnecting;
    attempt_end_ = SinkClock::steady_milliseconds() + kLongestConnecting;
    return;
  }
  fail_attempt(error_text(error));
}

/// 0, EINPROGRESS, or why not.
int SyslogConnection::start_connecting(const SocketAddress& address) {
  const int type = is_tcp() ? SOCK_STREAM : SOCK_DGRAM;
  socket_.reset(::socket(address.storage.ss_family, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket_) return errno;
  if (is_tcp()) keep_alive(socket_.get());
  return ::connect(socket_.get(), address.get(), address.length) == 0 ? 0 : errno;
}

/// False when neither a connection nor a reason why there is none is there in time.
bool SyslogConnection::finish_connecting(long long deadline) {
  const long long until = std::min(deadline, attempt_end_);
  pollfd place = {socket_.get(), POLLOUT, 0};
  int found = 0;
  do {
    const long long left = std::max(until - SinkClock::steady_milliseconds(), 0LL);
    found = ::poll(&place, 1, static_cast<int>(left));
  } while (found < 0 && errno == EINTR);
  if (found == 0 && SinkClock::steady_milliseconds() < attempt_end_) {
    is_stalled_ = true;
    return false;
  }
  const int error = found == 0 ? ETIMEDOUT : error_of(socket_.get());
  if (error == 0) {
    take_up();
  } else if (next_address_ < addresses_.size()) {
    try_next_address();
  } else {
    fail_attempt(error_text(error));
  }
  return true;
}

void SyslogConnection::take_up() {
  state_ = State::kUp;
  up_since_ = looked_at_ = SinkClock::steady_milliseconds();
  ++connections_;
  failure_.clear();
  sent_.clear();
  has_last_datagram_ = false;
}

void SyslogConnection::fail_attempt(const std::string& reason) {
  state_ = State::kDown;
  socket_.reset();
  pause_before_next();
  failure_ = reason;
}

void SyslogConnection::pause_before_next() {
  long long longest = settings_.longest_pause_milliseconds;
  if (settings_.transport == Settings::kLocal) longest = std::min(longest, kLongestLocalPause);
  pause_ = std::clamp(pause_ * 2, kFirstPause, longest);
  next_attempt_ = SinkClock::steady_milliseconds() + pause_;
}

}  // namespace qzlog
