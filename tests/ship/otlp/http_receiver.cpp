#include "tests/ship/otlp/http_receiver.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <optional>
#include <stdexcept>

namespace qz_test {

namespace {

/// What came of a connection and is not used yet.
class Incoming {
 public:
  explicit Incoming(int descriptor) : descriptor_(descriptor) {}

  std::optional<HttpRequest> next() {
    std::size_t end = std::string::npos;
    while ((end = bytes_.find("\r\n\r\n")) == std::string::npos) {
      if (!more()) return std::nullopt;
    }
    HttpRequest request = parsed_head(bytes_.substr(0, end));
    bytes_.erase(0, end + 4);
    const std::size_t size = std::stoul("0" + request.headers["content-length"]);
    while (bytes_.size() < size) {
      if (!more()) return std::nullopt;
    }
    request.body = bytes_.substr(0, size);
    bytes_.erase(0, size);
    return request;
  }

 private:
  bool more() {
    char block[65536];
    const ssize_t count = ::recv(descriptor_, block, sizeof block, 0);
    if (count <= 0) return false;
    bytes_.append(block, static_cast<std::size_t>(count));
    return true;
  }

  static HttpRequest parsed_head(const std::string& head) {
    HttpRequest request;
    std::size_t at = head.find("\r\n");
    request.head = head.substr(0, at);
    while (at != std::string::npos) {
      const std::size_t begin = at + 2;
      at = head.find("\r\n", begin);
      const std::string line = head.substr(begin, at == std::string::npos ? at : at - begin);
      const std::size_t colon = line.find(": ");
      std::string name = line.substr(0, colon);
      std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
      request.headers[name] = colon == std::string::npos ? "" : line.substr(colon + 2);
    }
    return request;
  }

  int descriptor_;
  std::string bytes_;
};

}  // namespace

HttpReceiver::HttpReceiver(Answer answer)
    : answer_(std::move(answer)), listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener_, any, size) != 0 || ::listen(listener_, 64) != 0 || ::getsockname(listener_, any, &size) != 0) {
    throw std::runtime_error("no port to listen at");
  }
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { accept_connections(); });
}

HttpReceiver::~HttpReceiver() {
  is_ending_ = true;
  ::shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const int descriptor : descriptors_) ::shutdown(descriptor, SHUT_RDWR);
  }
  for (std::thread& thread : threads_) thread.join();
  for (const int descriptor : descriptors_) ::close(descriptor);
  ::close(listener_);
}

std::vector<HttpRequest> HttpReceiver::requests() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return requests_;
}

void HttpReceiver::accept_connections() {
  for (int connection = 1;; ++connection) {
    const int descriptor = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor < 0) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    descriptors_.push_back(descriptor);
    threads_.emplace_back([this, descriptor, connection] { serve(descriptor, connection); });
  }
}

void HttpReceiver::serve(int descriptor, int connection) {
  Incoming incoming(descriptor);
  while (std::optional<HttpRequest> request = incoming.next()) {
    request->connection = connection;
    HttpReply answer = answer_(*request);
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      requests_.push_back(std::move(*request));
    }
    reply(descriptor, answer);
    if (answer.cut_at != static_cast<std::size_t>(-1)) break;
  }
  ::shutdown(descriptor, SHUT_RDWR);
}

void HttpReceiver::reply(int descriptor, const HttpReply& answer) {
  std::string text = "HTTP/1.1 " + std::to_string(answer.status) +
                     " Said\r\nContent-Length: " + std::to_string(answer.body.size()) + "\r\n";
  if (!answer.content_type.empty()) text += "Content-Type: " + answer.content_type + "\r\n";
  text += answer.more_headers + "\r\n" + answer.body;
  text.resize(std::min(text.size(), answer.cut_at));
  const std::size_t step = answer.pause_ms == 0 ? text.size() : 1;
  for (std::size_t at = 0; at < text.size() && !is_ending_;) {
    if (answer.pause_ms != 0) std::this_thread::sleep_for(std::chrono::milliseconds(answer.pause_ms));
    const ssize_t count = ::send(descriptor, text.data() + at, std::min(step, text.size() - at), MSG_NOSIGNAL);
    if (count <= 0) return;
    at += static_cast<std::size_t>(count);
  }
}

}  // namespace qz_test
