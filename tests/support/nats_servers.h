#ifndef QZLOG_TESTS_SUPPORT_NATS_SERVERS_H
#define QZLOG_TESTS_SUPPORT_NATS_SERVERS_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace qz_test {

/// nats-server on a free port of the loopback, ended with this object; killed with the test where that is killed.
class NatsServer {
 public:
  /// Keeps what it stores in `folder`; `more` are further arguments. It runs not yet.
  NatsServer(std::string folder, std::vector<std::string> more, int port, std::string host = "127.0.0.1");
  ~NatsServer();
  NatsServer(const NatsServer&) = delete;
  NatsServer& operator=(const NatsServer&) = delete;

  /// From the next start on in a network namespace of that name, where its host's address is.
  void move_to(const std::string& network_namespace) { namespace_ = network_namespace; }

  /// Whether the program is installed: tests skip else.
  static bool is_installed();
  static int free_port();

  /// Starts it, on the same port each time, and waits until it greets. False where it does not within 20 seconds.
  bool start();
  void kill();
  void stop() const;  ///< as it stands: what it does not read stays in buffers
  void go_on() const;

  int port() const { return port_; }
  /// HOST:PORT.
  std::string address() const { return host_ + ":" + std::to_string(port_); }

 private:
  bool greets() const;

  std::string folder_;
  std::vector<std::string> arguments_;
  std::string host_;
  std::string namespace_;
  int port_;
  pid_t process_ = -1;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_NATS_SERVERS_H
