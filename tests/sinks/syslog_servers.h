#ifndef QZLOG_TESTS_SINKS_SYSLOG_SERVERS_H
#define QZLOG_TESTS_SINKS_SYSLOG_SERVERS_H

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace qz_test {

/// Servers of syslog that do what a test says. Each waits at most so long for what is to come.
constexpr int kPatienceMilliseconds = 20'000;

class ServerSocket {
 public:
  ServerSocket() = default;
  explicit ServerSocket(int descriptor) : descriptor_(descriptor) {
    if (descriptor < 0) throw std::runtime_error("there is no socket");
  }
  ~ServerSocket() { close(); }
  ServerSocket(ServerSocket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  ServerSocket& operator=(ServerSocket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }
  void close() {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
  }
  bool has_something(int milliseconds) const {
    pollfd place = {descriptor_, POLLIN, 0};
    return poll(&place, 1, milliseconds) == 1;
  }

 private:
  int descriptor_ = -1;
};

inline sockaddr_in loopback(unsigned port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// A socket of this type at a free port, or at one that is given.
inline ServerSocket bound_socket(int type, unsigned port = 0) {
  ServerSocket socket(::socket(AF_INET, type | SOCK_CLOEXEC, 0));
  const int on = 1;
  setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  const sockaddr_in address = loopback(port);
  if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("the port cannot be had");
  }
  return socket;
}

inline unsigned port_of(const ServerSocket& socket) {
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

/// A port where nobody listens, most probably for as long as a test takes.
inline unsigned free_port(int type) { return port_of(bound_socket(type)); }

class DatagramServer {
 public:
  explicit DatagramServer(unsigned port = 0) : socket_(bound_socket(SOCK_DGRAM, port)) {}
  explicit DatagramServer(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    unlink(path.c_str());
    if (bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      throw std::runtime_error("there is no socket " + path);
    }
  }
  unsigned port() const { return port_of(socket_); }
  void close() { socket_.close(); }

  /// "" when there is none in time.
  std::string next(int milliseconds = kPatienceMilliseconds) {
    if (!socket_.has_something(milliseconds)) return "";
    std::string message(1U << 20, '\0');
    const ssize_t count = recv(socket_.get(), message.data(), message.size(), 0);
    message.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return message;
  }
  std::vector<std::string> all_there() {
    std::vector<std::string> messages;
    for (std::string message; !(message = next(0)).empty();) messages.push_back(message);
    return messages;
  }

 private:
  ServerSocket socket_;
};

/// One connection at a time, and messages behind their number of bytes.
class StreamServer {
 public:
  explicit StreamServer(unsigned port = 0) : listener_(bound_socket(SOCK_STREAM, port)) { listen(listener_.get(), 8); }
  unsigned port() const { return port_of(listener_); }

  bool accept(int milliseconds = kPatienceMilliseconds) {
    if (!listener_.has_something(milliseconds)) return false;
    connection_ = ServerSocket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    bytes_.clear();
    return true;
  }
  void shrink_window() const {
    const int size = 4096;
    setsockopt(listener_.get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
  }
  void close_connection() { connection_.close(); }
  /// Without the courtesy of an end: what the other side sends is refused.
  void break_connection() {
    const linger at_once = {1, 0};
    setsockopt(connection_.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    connection_.close();
  }
  void stop() {
    connection_.close();
    listener_.close();
  }
  const ServerSocket& connection() const { return connection_; }

  /// "" when there is none in time, or the connection ends.
  std::string next(int milliseconds = kPatienceMilliseconds) {
    std::string message;
    while (!take_message(message)) {
      if (!read_more(milliseconds)) return "";
    }
    return message;
  }
  /// What there is of a message that is not whole.
  const std::string& rest() const { return bytes_; }
  std::vector<std::string> all_there(int milliseconds = 0) {
    std::vector<std::string> messages;
    for (std::string message; !(message = next(milliseconds)).empty();) messages.push_back(message);
    return messages;
  }

 private:
  bool read_more(int milliseconds) {
    if (!connection_ && !accept(milliseconds)) return false;
    if (!connection_.has_something(milliseconds)) return false;
    char part[65536];
    const ssize_t count = recv(connection_.get(), part, sizeof part, 0);
    if (count <= 0) return false;
    bytes_.append(part, static_cast<std::size_t>(count));
    return true;
  }
  bool take_message(std::string& message) {
    const std::size_t blank = bytes_.find(' ');
    if (blank == std::string::npos) return false;
    const std::size_t size = std::strtoul(bytes_.c_str(), nullptr, 10);
    if (size == 0) throw std::runtime_error("no number of bytes: " + bytes_.substr(0, 100));
    if (bytes_.size() < blank + 1 + size) return false;
    message = bytes_.substr(blank + 1, size);
    bytes_.erase(0, blank + 1 + size);
    return true;
  }

  ServerSocket listener_;
  ServerSocket connection_;
  std::string bytes_;
};

/// Sends and sends to a client, for five seconds at most, as fast as it can.
class TalkingServer {
 public:
  explicit TalkingServer(int connection) : thread_([this, connection] { talk(connection); }) {}
  ~TalkingServer() {
    is_enough_ = true;
    thread_.join();
  }
  TalkingServer(const TalkingServer&) = delete;
  TalkingServer& operator=(const TalkingServer&) = delete;

 private:
  void talk(int connection) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    const std::string words(1U << 18, 'x');
    std::string heard(1U << 16, ' ');
    while (!is_enough_ && std::chrono::steady_clock::now() < end) {
      pollfd place = {connection, POLLOUT | POLLIN, 0};
      if (poll(&place, 1, 100) <= 0) continue;
      if (send(connection, words.data(), words.size(), MSG_DONTWAIT | MSG_NOSIGNAL) < 0 && errno != EAGAIN) return;
      if (recv(connection, heard.data(), heard.size(), MSG_DONTWAIT) == 0) return;
    }
  }

  std::atomic<bool> is_enough_{false};
  std::thread thread_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SINKS_SYSLOG_SERVERS_H
