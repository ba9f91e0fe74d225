// Entries of workload A as messages of syslog over TCP, to a server of the loopback that only reads. Peer: a loop of
// send() with the same bytes, which are there beforehand. The server is a process of its own.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <qzlog.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>
#include <string>
#include <vector>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kMessages = 50000;
constexpr unsigned kRuns = 9;

sockaddr_in loopback(unsigned port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// Reads whatever comes, one connection after the other, as long as this object lives.
class ReadingServer {
 public:
  ReadingServer() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    require(bind(listener_, any, size) == 0 && listen(listener_, 4) == 0 && getsockname(listener_, any, &size) == 0,
            "a server listens");
    port_ = ntohs(address.sin_port);
    process_ = fork();
    if (process_ == 0) serve();
  }
  ~ReadingServer() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    close(listener_);
  }
  ReadingServer(const ReadingServer&) = delete;
  ReadingServer& operator=(const ReadingServer&) = delete;
  unsigned port() const { return port_; }
  int connect() const {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port_);
    require(::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "the server answers");
    return socket;
  }

 private:
  [[noreturn]] void serve() const {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    static char bytes[1U << 18];
    for (;;) {
      const int connection = accept(listener_, nullptr, nullptr);
      while (recv(connection, bytes, sizeof bytes, 0) > 0) {
      }
      close(connection);
    }
  }

  int listener_;
  unsigned port_ = 0;
  pid_t process_ = -1;
};

template <typename Work>
double nanoseconds_per_message(Work work) {
  const auto begin = Clock::now();
  work();
  const std::chrono::duration<double, std::nano> all = Clock::now() - begin;
  return all.count() / kMessages;
}

qz_LOG_LogEntry entry_of_a() {
  qz_LOG_LogEntry entry(WorkloadA::kEntryId, 3);
  add_attributes(entry, WorkloadA());
  return entry;
}

/// What a sink sends, with the mean of its bytes.
double run_sink(const ReadingServer& server, bool builds_entries, std::size_t& bytes) {
  qz_LOG_SyslogSinkSettings settings;
  settings.transport = qz_LOG_SyslogSinkSettings::kTcp;
  settings.host = "127.0.0.1";
  settings.port = server.port();
  settings.application = "bench";
  settings.longest_wait_milliseconds = 10000;
  qz_LOG_SyslogSink sink(settings);
  const qz_LOG_LogEntry kept = entry_of_a();
  const double time = nanoseconds_per_message([&] {
    for (unsigned number = 0; number < kMessages; ++number) {
      require(builds_entries ? sink.Write(entry_of_a()) : sink.Write(kept), "a sink takes an entry");
    }
  });
  require(sink.Close(60000) == 0, "a server takes all entries");
  bytes = sink.GetCounts().bytes / kMessages;
  return time;
}

double run_plain(const ReadingServer& server, std::size_t bytes) {
  const std::string message(bytes, 'x');
  const int socket = server.connect();
  const double time = nanoseconds_per_message([&] {
    for (unsigned number = 0; number < kMessages; ++number) {
      require(send(socket, message.data(), message.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(message.size()),
              "a message is sent");
    }
  });
  close(socket);
  return time;
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

/// Each in turn, so that what the machine does besides meets all of them.
std::map<std::string, double> measure_messages() {
  const ReadingServer server;
  std::size_t bytes = 0;
  std::map<std::string, std::vector<double>> times;
  run_sink(server, false, bytes);
  for (unsigned round = 0; round < kRuns; ++round) {
    times["plain_ns"].push_back(run_plain(server, bytes));
    times["sink_ns"].push_back(run_sink(server, false, bytes));
    times["built_ns"].push_back(run_sink(server, true, bytes));
  }
  std::map<std::string, double> medians = {{"bytes", static_cast<double>(bytes)}};
  for (const auto& [name, values] : times) medians[name] = median(values);
  return medians;
}

}  // namespace

void add_syslog_cases(CaseList& cases) { cases.add_count("syslog/tcp", narrow_path(), measure_messages); }

}  // namespace qzlog_bench
