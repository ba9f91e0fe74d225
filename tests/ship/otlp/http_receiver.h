#ifndef QZLOG_TESTS_SHIP_OTLP_HTTP_RECEIVER_H
#define QZLOG_TESTS_SHIP_OTLP_HTTP_RECEIVER_H

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace qz_test {

struct HttpRequest {
  std::string head;                            // the first line
  std::map<std::string, std::string> headers;  // names in small letters
  std::string body;
  int connection = 0;  // which one of the receiver's, from 1
};

struct HttpReply {
  int status = 200;
  std::string content_type = "application/json";
  std::string body = "{}";
  std::string more_headers;                           // each with \r\n
  std::size_t cut_at = static_cast<std::size_t>(-1);  // so many bytes of all of it are sent, and the connection ends
  int pause_ms = 0;                                   // before each byte
};

/// A receiver of HTTP/1.1 on a free port of the loopback, which answers as a test says. It keeps all requests.
class HttpReceiver {
 public:
  using Answer = std::function<HttpReply(const HttpRequest&)>;

  explicit HttpReceiver(Answer answer);
  ~HttpReceiver();
  HttpReceiver(const HttpReceiver&) = delete;
  HttpReceiver& operator=(const HttpReceiver&) = delete;

  int port() const { return port_; }
  std::vector<HttpRequest> requests() const;

 private:
  void accept_connections();
  void serve(int descriptor, int connection);
  void reply(int descriptor, const HttpReply& answer);

  Answer answer_;
  int listener_;
  int port_ = 0;
  std::atomic<bool> is_ending_{false};
  mutable std::mutex mutex_;  // guards what follows
  std::vector<HttpRequest> requests_;
  std::vector<int> descriptors_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SHIP_OTLP_HTTP_RECEIVER_H
