#ifndef QZLOG_SHIP_SYSLOG_SERVER_STREAM_H
#define QZLOG_SHIP_SYSLOG_SERVER_STREAM_H

#include <memory>
#include <string_view>

#include "ship/syslog/syslog_settings.h"
#include "ship/syslog/tcp_socket.h"

namespace qzlog_ship {

/// Bytes to a server, encrypted or not. What goes wrong is a failure, of the connection one for now.
class ServerStream {
 public:
  /// Connects; with TLS, sees that the server is the one that it should be.
  static std::unique_ptr<ServerStream> open(const SyslogSettings& settings, Patience& patience);
  virtual ~ServerStream() = default;

  /// Returns when all of it is on its way.
  virtual void send(std::string_view bytes, Patience& patience) = 0;
  /// Throws when the server has ended the connection, and when it says anything: servers of syslog do not.
  virtual void look_for_end() = 0;
  /// Returns when the server's system has confirmed all that was sent, and the connection still stands.
  void wait_until_confirmed(Patience& patience);

 protected:
  [[noreturn]] static void fail_for_talking();

  explicit ServerStream(std::unique_ptr<TcpSocket> socket) : socket_(std::move(socket)) {}
  TcpSocket& socket() { return *socket_; }

 private:
  void wait_for_answer();

  std::unique_ptr<TcpSocket> socket_;
  bool has_waited_for_answer_ = false;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_SYSLOG_SERVER_STREAM_H
