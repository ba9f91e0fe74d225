// Records to a topic of Kafka through the plug-in, acknowledged by all replicas. Peer: librdkafka alone with the same
// settings, keys, headers and lines, which hands over all of it and then waits for all acknowledgements. The brokers
// are those that librdkafka has for tests, in threads of this process; a partition keeps its latest 5 MB.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <librdkafka/rdkafka.h>
#include <librdkafka/rdkafka_mock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "ship/transport.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kRecords = 20000;
constexpr std::size_t kBatch = 1000;
constexpr int kBrokers = 3;
constexpr int kPartitions = 4;
constexpr std::size_t kHosts = 16;      // their names are the keys
constexpr std::uint32_t kWait = 30000;  // milliseconds
constexpr unsigned kRuns = 5;

void require(bool condition, const std::string& what) {
  if (condition) return;
  std::fprintf(stderr, "qzlog_kafka_bench: %s\n", what.c_str());
  std::exit(EXIT_FAILURE);
}

double seconds_since(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

rd_kafka_t* make_producer(const std::vector<std::pair<const char*, std::string>>& settings,
                          void (*report)(rd_kafka_t*, const rd_kafka_message_t*, void*), void* opaque) {
  rd_kafka_conf_t* const config = rd_kafka_conf_new();
  std::array<char, 256> reason{};
  for (const auto& [name, value] : settings) {
    require(rd_kafka_conf_set(config, name, value.c_str(), reason.data(), reason.size()) == RD_KAFKA_CONF_OK,
            reason.data());
  }
  rd_kafka_conf_set_log_cb(config, [](const rd_kafka_t*, int, const char*, const char*) {});
  if (report != nullptr) rd_kafka_conf_set_dr_msg_cb(config, report);
  rd_kafka_conf_set_opaque(config, opaque);
  rd_kafka_t* const producer = rd_kafka_new(RD_KAFKA_PRODUCER, config, reason.data(), reason.size());
  require(producer != nullptr, reason.data());
  return producer;
}

/// Three brokers with the topic T.
class Cluster {
 public:
  // Brokers send each answer at once, as real ones do: by default the second of two answers of a broker for tests waits
  // for TCP's acknowledgement of the first, 40 ms.
  Cluster()
      : host_(make_producer({{"socket.nagle.disable", "true"}}, nullptr, nullptr)),
        cluster_(rd_kafka_mock_cluster_new(host_, kBrokers)) {
    require(rd_kafka_mock_topic_create(cluster_, "T", kPartitions, kBrokers) == RD_KAFKA_RESP_ERR_NO_ERROR,
            "a topic can be made");
  }
  ~Cluster() {
    rd_kafka_mock_cluster_destroy(cluster_);
    rd_kafka_destroy(host_);
  }
  Cluster(const Cluster&) = delete;
  Cluster& operator=(const Cluster&) = delete;

  std::string addresses() const { return rd_kafka_mock_cluster_bootstraps(cluster_); }

 private:
  rd_kafka_t* host_;
  rd_kafka_mock_cluster_t* cluster_;
};

const qzlog_transport& transport() {
  static void* const library = ::dlopen(QZLOG_KAFKA_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  require(library != nullptr, "the plug-in can be loaded");
  static const auto function =
      reinterpret_cast<qzlog_ship_transport_function>(::dlsym(library, QZLOG_TRANSPORT_FUNCTION));
  return *function();
}

const std::string& line() {
  static const std::string text =
      R"({"writer":"web1.example.com/4711/1763712930","seq":1234567,"id":1001,"level":3,"time":"2026-11-21T08:15:30Z",)"
      R"("written":"2026-11-21T08:15:30.123456789Z","definitions":"0123456789abcdef","name":"DISK_FULL",)"
      R"("attributes":{"Name":"vol1","Free":0,"Total":4096,"Reason":10}})";
  return text;
}

/// Of whom a record is, as the plug-in is told of it and as the plain client writes it.
struct Origin {
  std::string host;
  std::string writer;
  std::string identity;
};

std::vector<Origin> new_origins() {
  static std::uint64_t next = 0;
  std::vector<Origin> origins;
  for (; origins.size() < kRecords; ++next) {
    const std::string host = "web" + std::to_string(next % kHosts) + ".example.com";
    const std::string writer = host + "/4711/1763712930";
    origins.push_back({host, writer, writer + '/' + std::to_string(next)});
  }
  return origins;
}

class Plugin {
 public:
  explicit Plugin(const Cluster& cluster) : authority_(cluster.addresses()), url_("kafka://" + authority_ + "/T") {
    settings_.size = sizeof settings_;
    settings_.url = url_.c_str();
    settings_.scheme = "kafka";
    settings_.authority = authority_.c_str();
    settings_.path = "/T";
    settings_.client = "bench";
    host_.size = sizeof host_;
    host_.warn = [](void*, const char*) {};
    host_.is_ending = [](void*) { return 0; };
    qzlog_error error = {};
    require(transport().open_sender(&settings_, &host_, kWait, &sender_, &error) == QZLOG_DONE, error.text);
  }
  ~Plugin() { transport().close_sender(sender_); }
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  /// How many seconds it takes.
  double send() const {
    const std::vector<Origin> origins = new_origins();
    std::vector<qzlog_record> records(kBatch);
    const auto begin = Clock::now();
    for (std::size_t first = 0; first < origins.size(); first += kBatch) {
      for (std::size_t index = 0; index < kBatch; ++index) fill(records[index], origins[first + index]);
      send(records);
    }
    return seconds_since(begin);
  }

 private:
  static void fill(qzlog_record& record, const Origin& origin) {
    record.identity = {origin.identity.data(), origin.identity.size()};
    record.writer = {origin.writer.data(), origin.writer.size()};
    record.line = {line().data(), line().size()};
    record.product = {"shop", 4};
    record.event = {"DISK_FULL", 9};
    record.level = 3;
  }
  void send(const std::vector<qzlog_record>& records) const {
    std::vector<qzlog_result> results(records.size());
    qzlog_error error = {};
    require(transport().send(sender_, records.data(), records.size(), kWait, results.data(), &error) == QZLOG_DONE,
            error.text);
    require(std::all_of(results.begin(), results.end(),
                        [](const qzlog_result& each) { return each.fate == QZLOG_ACKNOWLEDGED; }),
            "each record is acknowledged");
  }

  std::string authority_;
  std::string url_;
  qzlog_settings settings_ = {};
  qzlog_host host_ = {};
  qzlog_sender* sender_ = nullptr;
};

/// The client library as its examples use it.
class PlainClient {
 public:
  explicit PlainClient(const Cluster& cluster)
      : producer_(make_producer(
            {{"bootstrap.servers", cluster.addresses()}, {"enable.idempotence", "true"}, {"acks", "all"}},
            [](rd_kafka_t*, const rd_kafka_message_t* report, void* count) {
              if (report->err == RD_KAFKA_RESP_ERR_NO_ERROR) ++*static_cast<std::size_t*>(count);
            },
            &acknowledged_)) {}
  ~PlainClient() { rd_kafka_destroy(producer_); }
  PlainClient(const PlainClient&) = delete;
  PlainClient& operator=(const PlainClient&) = delete;

  /// How many seconds it takes.
  double send() {
    const std::vector<Origin> origins = new_origins();
    acknowledged_ = 0;
    const auto begin = Clock::now();
    for (const Origin& origin : origins) {
      produce(origin);
      rd_kafka_poll(producer_, 0);
    }
    require(rd_kafka_flush(producer_, static_cast<int>(kWait)) == RD_KAFKA_RESP_ERR_NO_ERROR, "a client sends all");
    const double seconds = seconds_since(begin);
    require(acknowledged_ == kRecords, "all is acknowledged to a client");
    return seconds;
  }

 private:
  void produce(const Origin& origin) {
    const rd_kafka_resp_err_t error = rd_kafka_producev(
        producer_, RD_KAFKA_V_TOPIC("T"), RD_KAFKA_V_MSGFLAGS(RD_KAFKA_MSG_F_COPY),
        RD_KAFKA_V_VALUE(const_cast<char*>(line().data()), line().size()),
        RD_KAFKA_V_KEY(origin.host.data(), origin.host.size()),
        RD_KAFKA_V_HEADER("qzlog-identity", origin.identity.data(), static_cast<ssize_t>(origin.identity.size())),
        RD_KAFKA_V_END);
    require(error == RD_KAFKA_RESP_ERR_NO_ERROR, rd_kafka_err2str(error));
  }

  std::size_t acknowledged_ = 0;
  rd_kafka_t* producer_;
};

void measure_sending(benchmark::State& state) {
  for ([[maybe_unused]] auto iteration : state) {
    const Cluster cluster;
    const Plugin plugin(cluster);
    PlainClient client(cluster);
    std::vector<double> own;
    std::vector<double> plain;
    plugin.send();
    client.send();
    for (unsigned round = 0; round < kRuns; ++round) {
      own.push_back(plugin.send());
      plain.push_back(client.send());
    }
    state.counters["per_second"] = kRecords / median(own);
    state.counters["plain_per_second"] = kRecords / median(plain);
    state.counters["bytes"] = static_cast<double>(line().size());
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::RegisterBenchmark("kafka/send", measure_sending)->Iterations(1);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return EXIT_SUCCESS;
}
