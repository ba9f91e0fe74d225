// Entries of workload A on their way to journald, entries per second by the clock on the wall. Floor: a plain sender of
// the same bytes in a loop. Both send to a socket that a thread reads, which does no more, and where it can be started
// to a journald of its own.
#include <fcntl.h>
#include <qzlog.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/run_time_value.h"
#include "bench/temporary_folder.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kEntries = 10000;
constexpr unsigned kRuns = 5;
constexpr unsigned kLevel = 3;
constexpr unsigned kLongestWait = 60000;

sockaddr_un address_of(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

/// Reads what comes in a thread, and keeps the last of it.
class Reader {
 public:
  Reader() : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un address = address_of(path_);
    require(::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "a socket is bound");
    thread_ = std::thread([this] { read(); });
  }
  ~Reader() {
    const std::string end;
    const int sender = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = address_of(path_);
    ::sendto(sender, end.data(), 0, 0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    thread_.join();
    ::close(sender);
    ::close(socket_);
    ::unlink(path_.c_str());
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  const std::string& path() const { return path_; }
  void wait_for(unsigned messages) const {
    while (read_.load() < messages) std::this_thread::yield();
  }
  /// Of the last one that was read.
  std::string message() const { return std::string(bytes_.data(), size_); }

 private:
  void read() {
    for (;;) {
      const ssize_t count = ::recv(socket_, bytes_.data(), bytes_.size(), 0);
      if (count <= 0) return;
      size_ = static_cast<std::size_t>(count);
      read_.fetch_add(1);
    }
  }

  const std::string path_ = temporary_file("journal");
  const int socket_;
  std::vector<char> bytes_ = std::vector<char>(1 << 16);
  std::size_t size_ = 0;
  std::atomic<unsigned> read_{0};
  std::thread thread_;
};

namespace fs = std::filesystem;

/// A namespace of journald's, begun and removed with the object; it runs where root starts it and systemd is there.
class Journald {
 public:
  Journald() {
    constexpr const char* kProgram = "/lib/systemd/systemd-journald";
    if (::geteuid() != 0 || ::access(kProgram, X_OK) != 0 || !fs::exists("/etc/machine-id")) return;
    std::ofstream(configuration()) << "[Journal]\nStorage=persistent\nRateLimitIntervalSec=0\n";
    process_ = ::fork();
    if (process_ == 0) {
      const int nowhere = ::open("/dev/null", O_RDWR);
      for (const int each : {STDOUT_FILENO, STDERR_FILENO}) ::dup2(nowhere, each);
      ::execl(kProgram, kProgram, name_.c_str(), nullptr);
      ::_exit(127);
    }
    for (int i = 0; i < 500 && !runs(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ~Journald() {
    if (process_ <= 0) return;
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
    std::error_code ignored;
    fs::remove(configuration(), ignored);
    fs::remove_all("/run/systemd/journal." + name_, ignored);
    for (const auto& each : fs::directory_iterator("/var/log/journal", ignored)) {
      if (each.path().filename().string().ends_with('.' + name_)) fs::remove_all(each.path(), ignored);
    }
  }
  Journald(const Journald&) = delete;
  Journald& operator=(const Journald&) = delete;

  std::string path() const { return "/run/systemd/journal." + name_ + "/socket"; }
  bool runs() const {
    const int sender = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = address_of(path());
    const bool answers = ::connect(sender, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(sender);
    return answers;
  }

 private:
  std::string configuration() const { return "/etc/systemd/journald@" + name_ + ".conf"; }

  const std::string name_ = "qzlogbench" + std::to_string(::getpid());
  pid_t process_ = -1;
};

std::unique_ptr<qz_LOG_JournalSink> open_sink(const std::string& path) {
  qz_LOG_JournalSinkSettings settings;
  settings.product = "bench";
  settings.socket_path = path;
  settings.longest_wait_milliseconds = kLongestWait;
  return std::make_unique<qz_LOG_JournalSink>(settings);
}

void write_one(qz_LOG_JournalSink& sink, WorkloadA& workload) {
  make_unknown(workload);
  qz_LOG_LogEntry entry(WorkloadA::kEntryId, kLevel);
  add_attributes(entry, workload);
  require(sink.Write(entry), "a sink takes an entry");
}

/// What the sink sends for an entry.
std::string message_of_a() {
  Reader reader;
  WorkloadA workload;
  write_one(*open_sink(reader.path()), workload);
  reader.wait_for(1);
  return reader.message();
}

template <typename Step>
double nanoseconds_each(const Reader* reader, Step step) {
  const auto begin = Clock::now();
  for (unsigned entry = 0; entry < kEntries; ++entry) step();
  if (reader != nullptr) reader->wait_for(kEntries);
  const std::chrono::duration<double, std::nano> all = Clock::now() - begin;
  return all.count() / kEntries;
}

double run_sink(const Reader* reader, const std::string& path) {
  const std::unique_ptr<qz_LOG_JournalSink> sink = open_sink(path);
  WorkloadA workload;
  return nanoseconds_each(reader, [&] { write_one(*sink, workload); });
}

double run_floor(const Reader* reader, const std::string& path, const std::string& message) {
  const int sender = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const sockaddr_un address = address_of(path);
  require(::connect(sender, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "a socket is connected");
  const double each = nanoseconds_each(reader, [&] {
    require(::send(sender, message.data(), message.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(message.size()),
            "a message is sent");
  });
  ::close(sender);
  return each;
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

/// Each in turn, so that what the machine does besides meets both.
std::map<std::string, double> measure_entries() {
  const std::string message = message_of_a();
  const Journald journald;
  const bool has_journald = journald.runs();
  std::map<std::string, std::vector<double>> times;
  for (unsigned round = 0; round < kRuns; ++round) {
    {
      const Reader reader;
      times["floor_ns"].push_back(run_floor(&reader, reader.path(), message));
    }
    {
      const Reader reader;
      times["sink_ns"].push_back(run_sink(&reader, reader.path()));
    }
    if (!has_journald) continue;
    times["journald_floor_ns"].push_back(run_floor(nullptr, journald.path(), message));
    times["journald_sink_ns"].push_back(run_sink(nullptr, journald.path()));
  }
  std::map<std::string, double> medians = {{"message_bytes", static_cast<double>(message.size())},
                                           {"has_journald", has_journald ? 1 : 0}};
  for (const auto& [name, values] : times) medians[name] = median(values);
  return medians;
}

}  // namespace

void add_journal_cases(CaseList& cases) { cases.add_count("journal/entries", icu_path(), measure_entries); }

}  // namespace qzlog_bench
