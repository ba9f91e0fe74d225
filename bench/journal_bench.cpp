// Entries of workload A on their way to journald, entries per second by the clock on the wall. Floor: a plain sender of
// the same bytes in a loop. Both send to a socket that a thread reads, in the place of journald's; or to the real one
// that QZLOG_BENCH_JOURNAL names, whose RateLimitIntervalSec is 0.
#include <qzlog.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
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

constexpr unsigned kEntries = 20000;
constexpr unsigned kRuns = 9;
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

double measure(const std::function<double(const Reader*, const std::string&)>& run) {
  if (const char* const real = std::getenv("QZLOG_BENCH_JOURNAL")) return run(nullptr, real);
  const Reader reader;
  return run(&reader, reader.path());
}

/// Each in turn, so that what the machine does besides meets both.
std::map<std::string, double> measure_entries() {
  const std::string message = message_of_a();
  std::vector<double> floor;
  std::vector<double> sink;
  for (unsigned round = 0; round < kRuns; ++round) {
    floor.push_back(
        measure([&](const Reader* reader, const std::string& path) { return run_floor(reader, path, message); }));
    sink.push_back(measure(run_sink));
  }
  return {
      {"floor_ns", median(floor)}, {"sink_ns", median(sink)}, {"message_bytes", static_cast<double>(message.size())}};
}

}  // namespace

void add_journal_cases(CaseList& cases) { cases.add_count("journal/entries", icu_path(), measure_entries); }

}  // namespace qzlog_bench
