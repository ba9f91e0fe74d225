#include "tests/support/nats_servers.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

namespace qz_test {
namespace {

constexpr const char* kProgram = "/usr/sbin/nats-server";
constexpr std::chrono::seconds kPatience{20};

class Socket {
 public:
  Socket() : descriptor_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}
  ~Socket() { ::close(descriptor_); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

sockaddr_in address_of(const std::string& host, int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  ::inet_pton(AF_INET, host.c_str(), &address.sin_addr);
  return address;
}

[[noreturn]] void become_server(std::vector<std::string> arguments, const std::string& log) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  const int file = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  ::dup2(file, STDOUT_FILENO);
  ::dup2(file, STDERR_FILENO);
  ::execvp(pointers[0], pointers.data());
  ::_exit(127);
}

}  // namespace

NatsServer::NatsServer(std::string folder, std::vector<std::string> more, int port, std::string host)
    : folder_(std::move(folder)),
      arguments_{kProgram, "-a", host, "-p", std::to_string(port), "-sd", folder_},
      host_(std::move(host)),
      port_(port) {
  arguments_.insert(arguments_.end(), more.begin(), more.end());
}

NatsServer::~NatsServer() { kill(); }

bool NatsServer::is_installed() { return ::access(kProgram, X_OK) == 0; }

int NatsServer::free_port() {
  const Socket socket;
  sockaddr_in address = address_of("127.0.0.1", 0);
  socklen_t size = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  if (::bind(socket.get(), any, size) != 0 || ::getsockname(socket.get(), any, &size) != 0) return 0;
  return ntohs(address.sin_port);
}

bool NatsServer::start() {
  std::vector<std::string> words;
  if (!namespace_.empty()) words = {"ip", "netns", "exec", namespace_};
  words.insert(words.end(), arguments_.begin(), arguments_.end());
  process_ = ::fork();
  if (process_ == 0) become_server(words, folder_ + ".log");
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (std::chrono::steady_clock::now() < end) {
    if (greets()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

// Its first word is INFO.
bool NatsServer::greets() const {
  const Socket socket;
  sockaddr_in address = address_of(host_, port_);
  if (::connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return false;
  pollfd wanted = {socket.get(), POLLIN, 0};
  char word[4] = {};
  return ::poll(&wanted, 1, 1000) == 1 && ::recv(socket.get(), word, sizeof word, MSG_WAITALL) == 4 &&
         std::string(word, 4) == "INFO";
}

void NatsServer::kill() {
  if (process_ <= 0) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
  process_ = -1;
}

void NatsServer::stop() const { ::kill(process_, SIGSTOP); }
void NatsServer::go_on() const { ::kill(process_, SIGCONT); }

}  // namespace qz_test
