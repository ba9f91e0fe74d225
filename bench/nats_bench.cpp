// Records to streams of NATS through the plug-in, acknowledged. Peer: the plain C client, which publishes the same
// bytes without waiting and then waits for all acknowledgements. And a group of two readers beside one, with some work
// for each record. Servers are started for it on the loopback, one and three.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <nats/nats.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ship/transport.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kRecords = 20000;
constexpr std::size_t kBatch = 1000;
constexpr std::size_t kRead = 20000;
constexpr std::size_t kReadAtOnce = 400;
constexpr std::chrono::microseconds kWork{50};
constexpr std::uint32_t kWait = 30000;  // milliseconds
constexpr unsigned kRuns = 5;
constexpr unsigned kRunsOfReaders = 5;

void require(bool condition, const std::string& what) {
  if (condition) return;
  std::fprintf(stderr, "qzlog_nats_bench: %s\n", what.c_str());
  std::exit(EXIT_FAILURE);
}

double seconds_since(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

/// Of this process, so that two of them may run at a time.
int port_of(unsigned number) { return 20000 + ::getpid() % 4000 * 10 + static_cast<int>(number); }

/// One nats-server, or several that are a cluster, in a folder of their own.
class Servers {
 public:
  explicit Servers(unsigned count) {
    char name[] = "/tmp/qzlog_nats_benchXXXXXX";
    require(::mkdtemp(name) != nullptr, "a temporary folder can be made");
    folder_ = name;
    for (unsigned number = 0; number < count; ++number) start(number, count);
  }
  ~Servers() {
    for (const pid_t process : processes_) {
      ::kill(process, SIGKILL);
      ::waitpid(process, nullptr, 0);
    }
    std::filesystem::remove_all(folder_);
  }
  Servers(const Servers&) = delete;
  Servers& operator=(const Servers&) = delete;

  const std::string& addresses() const { return addresses_; }

 private:
  void start(unsigned number, unsigned count) {
    const std::string own = std::to_string(number);
    std::vector<std::string> words = {
        "nats-server", "-js", "-a",  "127.0.0.1",         "-p", std::to_string(port_of(number)),
        "-n",          own,   "-sd", folder_ + '/' + own, "-l", folder_ + "/log" + own};
    if (count > 1) {
      std::string routes;
      for (unsigned other = 0; other < count; ++other) routes += (other == 0 ? "" : ",") + route(other);
      words.insert(words.end(), {"--cluster_name", "C", "--cluster", route(number), "--routes", routes});
    }
    addresses_ += (number == 0 ? "127.0.0.1:" : ",127.0.0.1:") + std::to_string(port_of(number));
    processes_.push_back(::fork());
    if (processes_.back() == 0) become(words);
  }
  static std::string route(unsigned number) { return "nats://127.0.0.1:" + std::to_string(port_of(number + 5)); }
  [[noreturn]] static void become(std::vector<std::string>& words) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    ::execv("/usr/sbin/nats-server", arguments.data());
    ::_exit(127);
  }

  std::string folder_;
  std::string addresses_;
  std::vector<pid_t> processes_;
};

const qzlog_transport& transport() {
  static void* const library = ::dlopen(QZLOG_NATS_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  require(library != nullptr, "the plug-in can be loaded");
  static const auto function =
      reinterpret_cast<qzlog_ship_transport_function>(::dlsym(library, QZLOG_TRANSPORT_FUNCTION));
  return *function();
}

/// What the functions of the plug-in take.
struct Opening {
  Opening(const Servers& servers, unsigned replicas)
      : authority(servers.addresses()), url("nats://" + authority + "/S"), count(std::to_string(replicas)) {
    settings.size = sizeof settings;
    settings.url = url.c_str();
    settings.scheme = "nats";
    settings.authority = authority.c_str();
    settings.path = "/S";
    settings.client = "bench";
    options[0] = {"create", "yes"};
    options[1] = {"replicas", count.c_str()};
    host.size = sizeof host;
    host.warn = [](void*, const char*) {};
    host.is_ending = [](void*) { return 0; };
  }
  Opening(const Opening&) = delete;
  Opening& operator=(const Opening&) = delete;

  std::string authority;
  std::string url;
  std::string count;
  qzlog_option options[2] = {};
  qzlog_settings settings = {};
  qzlog_host host = {};
};

struct Sender {
  explicit Sender(Opening& opening) {
    opening.settings.options = opening.options;
    opening.settings.option_count = std::size(opening.options);
    qzlog_error error = {};
    qzlog_outcome outcome = QZLOG_LATER;
    // Servers that just began have no JetStream yet.
    for (const auto begin = Clock::now(); outcome == QZLOG_LATER && seconds_since(begin) < 60;) {
      outcome = transport().open_sender(&opening.settings, &opening.host, 5000, &sender, &error);
      if (outcome == QZLOG_LATER) ::usleep(100000);
    }
    require(outcome == QZLOG_DONE, error.text);
  }
  ~Sender() { transport().close_sender(sender); }
  Sender(const Sender&) = delete;
  Sender& operator=(const Sender&) = delete;

  qzlog_sender* sender = nullptr;
};

const std::string& line() {
  static const std::string text =
      R"({"writer":"web1.example.com/4711/1763712930","seq":1234567,"id":1001,"level":3,"time":"2026-11-21T08:15:30Z",)"
      R"("written":"2026-11-21T08:15:30.123456789Z","definitions":"0123456789abcdef","name":"DISK_FULL",)"
      R"("attributes":{"Name":"vol1","Free":0,"Total":4096,"Reason":10}})";
  return text;
}

std::vector<std::string> new_identities(std::size_t count) {
  static std::uint64_t next = 0;
  std::vector<std::string> identities;
  while (identities.size() < count) identities.push_back("web1.example.com/4711/1763712930/" + std::to_string(next++));
  return identities;
}

double send_by_plugin(qzlog_sender* sender, std::size_t count) {
  const std::vector<std::string> identities = new_identities(count);
  std::vector<qzlog_record> records(kBatch);
  const auto begin = Clock::now();
  for (std::size_t first = 0; first < identities.size(); first += kBatch) {
    for (std::size_t index = 0; index < kBatch; ++index) {
      records[index].identity = {identities[first + index].data(), identities[first + index].size()};
      records[index].line = {line().data(), line().size()};
      records[index].product = {"shop", 4};
      records[index].event = {"DISK_FULL", 9};
      records[index].level = 3;
    }
    std::vector<qzlog_result> results(kBatch);
    qzlog_error error = {};
    require(transport().send(sender, records.data(), kBatch, kWait, results.data(), &error) == QZLOG_DONE, error.text);
    require(std::all_of(results.begin(), results.end(),
                        [](const qzlog_result& each) { return each.fate == QZLOG_ACKNOWLEDGED; }),
            "each record is acknowledged, and none is a double");
  }
  return seconds_since(begin);
}

/// The client library as its examples use it.
class PlainClient {
 public:
  explicit PlainClient(const Servers& servers) {
    const std::string& addresses = servers.addresses();
    require(natsConnection_ConnectTo(&connection_, ("nats://" + addresses).c_str()) == NATS_OK, "a client connects");
    require(natsConnection_JetStream(&context_, connection_, nullptr) == NATS_OK, "a client has JetStream");
  }
  ~PlainClient() {
    jsCtx_Destroy(context_);
    natsConnection_Destroy(connection_);
  }
  PlainClient(const PlainClient&) = delete;
  PlainClient& operator=(const PlainClient&) = delete;

  double send() const {
    const std::vector<std::string> identities = new_identities(kRecords);
    const auto begin = Clock::now();
    for (const std::string& identity : identities) {
      jsPubOptions options;
      jsPubOptions_Init(&options);
      options.MsgId = identity.c_str();
      require(js_PublishAsync(context_, "S.shop.DISK_FULL.3", line().data(), static_cast<int>(line().size()),
                              &options) == NATS_OK,
              "a client publishes");
    }
    jsPubOptions wait;
    jsPubOptions_Init(&wait);
    wait.MaxWait = kWait;
    require(js_PublishAsyncComplete(context_, &wait) == NATS_OK, "all is acknowledged to a client");
    return seconds_since(begin);
  }

 private:
  natsConnection* connection_ = nullptr;
  jsCtx* context_ = nullptr;
};

void measure_sending(benchmark::State& state, unsigned replicas) {
  for ([[maybe_unused]] auto iteration : state) {
    const Servers servers(replicas);
    Opening opening(servers, replicas);
    const Sender sender(opening);
    const PlainClient client(servers);
    std::vector<double> own;
    std::vector<double> plain;
    client.send();
    for (unsigned round = 0; round < kRuns; ++round) {
      own.push_back(send_by_plugin(sender.sender, kRecords));
      plain.push_back(client.send());
    }
    state.counters["per_second"] = kRecords / median(own);
    state.counters["plain_per_second"] = kRecords / median(plain);
    state.counters["bytes"] = static_cast<double>(line().size());
  }
}

void work() {
  for (const auto end = Clock::now() + kWork; Clock::now() < end;) {
  }
}

/// Reads its part of a group, and settles it. How many those were.
std::size_t read_part(const Servers& servers, const std::string& group) {
  Opening opening(servers, 1);
  qzlog_start start = {};
  start.size = sizeof start;
  start.group = group.c_str();
  qzlog_reader* reader = nullptr;
  qzlog_error error = {};
  require(transport().open_reader(&opening.settings, &opening.host, &start, kWait, &reader, &error) == QZLOG_DONE,
          error.text);
  std::size_t all = 0;
  for (std::int32_t at_end = 0; at_end == 0;) {
    std::size_t count = 0;
    qzlog_received records[kReadAtOnce];
    require(transport().read(reader, records, kReadAtOnce, 100, &count, &at_end, &error) == QZLOG_DONE, error.text);
    std::vector<std::uint64_t> tokens;
    for (std::size_t index = 0; index < count; ++index) {
      work();
      tokens.push_back(records[index].token);
    }
    if (count > 0) {
      require(transport().settle(reader, tokens.data(), count, kWait, &error) == QZLOG_DONE, error.text);
    }
    all += count;
  }
  transport().close_reader(reader);
  return all;
}

void measure_readers(benchmark::State& state) {
  for ([[maybe_unused]] auto iteration : state) {
    const Servers servers(1);
    Opening opening(servers, 1);
    send_by_plugin(Sender(opening).sender, kRead);
    std::vector<double> alone;
    std::vector<double> together;
    std::vector<double> shares;
    for (unsigned round = 0; round < kRunsOfReaders; ++round) {
      auto begin = Clock::now();
      require(read_part(servers, "one" + std::to_string(round)) == kRead, "one reads all");
      alone.push_back(seconds_since(begin));
      const std::string group = "two" + std::to_string(round);
      std::size_t part = 0;
      begin = Clock::now();
      std::thread other([&] { part = read_part(servers, group); });
      const std::size_t rest = read_part(servers, group);
      other.join();
      together.push_back(seconds_since(begin));
      require(part + rest == kRead, "two read all between them, and nothing twice");
      shares.push_back(static_cast<double>(std::max(part, rest)) / kRead);
    }
    state.counters["alone_per_second"] = kRead / median(alone);
    state.counters["faster"] = median(alone) / median(together);
    state.counters["larger_share"] = median(shares);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (::access("/usr/sbin/nats-server", X_OK) != 0) {
    std::fprintf(stderr, "qzlog_nats_bench: nats-server is not installed\n");
    return EXIT_FAILURE;
  }
  for (const unsigned replicas : {1U, 3U}) {
    benchmark::RegisterBenchmark(("nats/send/" + std::to_string(replicas)).c_str(), measure_sending, replicas)
        ->Iterations(1);
  }
  benchmark::RegisterBenchmark("nats/group", measure_readers)->Iterations(1);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return EXIT_SUCCESS;
}
