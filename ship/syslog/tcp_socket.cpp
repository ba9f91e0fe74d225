#include "ship/syslog/tcp_socket.h"

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

/// False at the deadline, or at the end of the patience.
bool poll_until(int descriptor, short events, Deadline deadline, Patience& patience) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    const auto slice = std::clamp(left, std::chrono::milliseconds(0), patience.slice());
    pollfd place = {descriptor, events, 0};
    const int count = ::poll(&place, 1, static_cast<int>(slice.count()));
    if (count > 0) return true;
    if (count == 0 && slice == std::chrono::milliseconds(0)) return false;
    if (count < 0 && errno != EINTR) fail_for_now(std::strerror(errno));
  }
}

}  // namespace

TcpSocket::TcpSocket(const std::string& host, const std::string& port, Patience& patience) {
  std::string failure;
  const std::vector<HostAddress> addresses = find_addresses(host, port, patience.end());
  for (std::size_t index = 0; index < addresses.size(); ++index) {
    // An address that does not answer leaves time for the others.
    const auto left = (patience.end() - std::chrono::steady_clock::now()) / static_cast<long>(addresses.size() - index);
    if (connect(addresses[index], std::chrono::steady_clock::now() + left, patience, failure)) return;
    reset();
  }
  fail_for_now("no connection: " + failure);
}

TcpSocket::~TcpSocket() { reset(); }

void TcpSocket::reset() noexcept {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
}

bool TcpSocket::connect(const HostAddress& address, Deadline deadline, Patience& patience, std::string& failure) {
  descriptor_ = ::socket(address.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  int error = descriptor_ < 0 ? errno : 0;
  const auto* const place = reinterpret_cast<const sockaddr*>(&address.storage);
  if (error == 0 && ::connect(descriptor_, place, address.length) != 0) error = errno;
  if (error == EINPROGRESS) {
    error = ETIMEDOUT;
    socklen_t size = sizeof error;
    if (poll_until(descriptor_, POLLOUT, deadline, patience))
      ::getsockopt(descriptor_, SOL_SOCKET, SO_ERROR, &error, &size);
  }
  if (error != 0) {
    failure = std::strerror(error);
    return false;
  }
  // Both only make it faster, or a lost peer noticed sooner.
  const int on = 1;
  ::setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  ::setsockopt(descriptor_, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
  return true;
}

void TcpSocket::wait(short events, Patience& patience) const {
  if (!poll_until(descriptor_, events, patience.end(), patience))
    fail_for_now("the server does not read, or does not answer, in time");
}

std::size_t TcpSocket::unconfirmed() const {
  int bytes = 0;
  if (::ioctl(descriptor_, SIOCOUTQ, &bytes) != 0) fail_for_now(std::strerror(errno));
  return static_cast<std::size_t>(bytes);
}

}  // namespace qzlog_ship
