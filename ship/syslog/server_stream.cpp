#include "ship/syslog/server_stream.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "ship/plugin/plugin_call.h"
#include "ship/syslog/tls_stream.h"

namespace qzlog_ship {

namespace {

class PlainStream final : public ServerStream {
 public:
  explicit PlainStream(std::unique_ptr<TcpSocket> socket) : ServerStream(std::move(socket)) {}

  void send(std::string_view bytes, Patience& patience) override {
    while (!bytes.empty()) {
      const ssize_t count = ::send(socket().get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count >= 0) {
        bytes.remove_prefix(static_cast<std::size_t>(count));
      } else if (errno == EAGAIN) {
        socket().wait(POLLOUT, patience);
      } else if (errno != EINTR) {
        fail_for_now(std::string("the connection broke: ") + std::strerror(errno));
      }
    }
  }

  void look_for_end() override {
    char answer[4096];
    for (;;) {
      const ssize_t count = ::recv(socket().get(), answer, sizeof answer, 0);
      if (count == 0) fail_for_now("the server ended the connection");
      if (count > 0) fail_for_talking();
      if (errno == EAGAIN) return;
      if (errno != EINTR) fail_for_now(std::string("the connection broke: ") + std::strerror(errno));
    }
  }
};

}  // namespace

std::unique_ptr<ServerStream> ServerStream::open(const SyslogSettings& settings, Patience& patience) {
  // A certificate that cannot be read is told before somebody looks for the server.
  std::unique_ptr<TlsContext> context;
  if (settings.is_encrypted) context = std::make_unique<TlsContext>(settings);
  auto socket = std::make_unique<TcpSocket>(settings.host, settings.port, patience);
  if (context) return std::make_unique<TlsStream>(*context, settings.host, std::move(socket), patience);
  return std::make_unique<PlainStream>(std::move(socket));
}

void ServerStream::fail_for_talking() {
  fail_for_good("the server answers, which none of syslog does: is the port right?");
}

// Nothing tells when the last byte is confirmed, so it is asked for, at growing distances.
void ServerStream::wait_until_confirmed(Patience& patience) {
  auto pause = std::chrono::microseconds(50);
  while (socket_->unconfirmed() != 0) {
    look_for_end();
    if (patience.is_over()) fail_for_now("the server does not read in time");
    const timespec time = {0, std::chrono::nanoseconds(pause).count()};
    ::ppoll(nullptr, 0, &time, nullptr);
    pause = std::min(2 * pause, std::chrono::microseconds(5000));
  }
  wait_for_answer();
  look_for_end();
}

/// Once: a server of something else confirms what it gets, and then says that it does not understand.
void ServerStream::wait_for_answer() {
  constexpr int kMilliseconds = 100;
  if (std::exchange(has_waited_for_answer_, true)) return;
  pollfd answer = {socket_->get(), POLLIN, 0};
  ::poll(&answer, 1, kMilliseconds);
}

}  // namespace qzlog_ship
