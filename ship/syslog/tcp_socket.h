#ifndef QZLOG_SHIP_SYSLOG_TCP_SOCKET_H
#define QZLOG_SHIP_SYSLOG_TCP_SOCKET_H

#include <cstddef>
#include <string>

#include "ship/plugin/patience.h"
#include "ship/syslog/host_addresses.h"

namespace qzlog_ship {

/// A TCP connection, whose calls wait for nothing but where they say so. What goes wrong is a failure for now.
class TcpSocket {
 public:
  /// Connects to the first address of the host that answers, and waits for that.
  TcpSocket(const std::string& host, const std::string& port, Patience& patience);
  ~TcpSocket();
  TcpSocket(const TcpSocket&) = delete;
  TcpSocket& operator=(const TcpSocket&) = delete;

  int get() const { return descriptor_; }
  /// Waits until one of these events of poll, or an error, is there. Throws at the end of the patience.
  void wait(short events, Patience& patience) const;
  /// Bytes that the other side's system has not confirmed.
  std::size_t unconfirmed() const;

 private:
  bool connect(const HostAddress& address, Deadline deadline, Patience& patience, std::string& failure);
  void reset() noexcept;

  int descriptor_ = -1;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_SYSLOG_TCP_SOCKET_H
