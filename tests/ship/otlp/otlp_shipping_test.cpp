// `qzlog ship` to a receiver that fails, while files rotate and the shipper is killed: what was written is received.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <thread>

#include "tests/ship/otlp/http_receiver.h"
#include "tests/ship/otlp/received_lines.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/seeded_random.h"
#include "tests/tools/ship/ship_fixture.h"

namespace qzlog_test {
namespace {

using qz_test::HttpReceiver;
using qz_test::HttpReply;
using qz_test::HttpRequest;

/// The long form has 300 kills; the other one 15.
int kills() { return std::getenv("QZLOG_STRESS") != nullptr ? 300 : 15; }

/// Keeps what it takes, and fails in one of so many requests: before it takes it, or behind.
class FailingCollector {
 public:
  explicit FailingCollector(int one_in) : one_in_(one_in) {}

  HttpReply answer(const HttpRequest& request) {
    const std::lock_guard<std::mutex> lock(mutex_);
    HttpReply reply;
    reply.content_type = "application/x-protobuf";
    reply.body = "";
    const bool fails = one_in_ != 0 && random_.one_in(one_in_);
    if (fails && random_.one_in(2)) {
      reply.status = 503;
      return reply;
    }
    Lines lines;
    add_lines_of_protobuf(request.body, lines);
    for (const auto& [identity, line] : lines) ++counts_[identity];
    if (fails) reply.cut_at = random_.below(20);
    return reply;
  }
  std::map<std::string, int> counts() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return counts_;
  }

 private:
  int one_in_;
  mutable std::mutex mutex_;
  qz_test::SeededRandom random_;
  std::map<std::string, int> counts_;
};

class OtlpShipping : public ShipFixture {
 protected:
  /// Appends lines, to another file each 100 ms, until it is told to end.
  void write_lines(const std::atomic<bool>& is_enough) {
    const auto begin = std::chrono::steady_clock::now();
    for (int seq = 1; !is_enough; seq += 10) {
      const auto file = (std::chrono::steady_clock::now() - begin) / std::chrono::milliseconds(100) + 1001;
      append("logs/s.20261121." + std::to_string(file), lines(seq, seq + 9));
      last_seq_ = seq + 9;
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  }
  std::vector<std::string> to(const HttpReceiver& receiver, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {
        "logs/s",  "--to",       "otlp+http://127.0.0.1:" + std::to_string(receiver.port()),
        "--state", "state.json", "--batch",
        "100",     "--product",  "shop"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  void kill_shippers(const HttpReceiver& receiver) {
    std::atomic<bool> is_enough{false};
    std::thread writer([&] { write_lines(is_enough); });
    for (int count = 0; count < kills(); ++count) {
      Shipper shipper(folder_.path(), to(receiver));
      std::this_thread::sleep_for(std::chrono::milliseconds(random_.below(200)));
      shipper.send(SIGKILL);
      EXPECT_EQ(shipper.wait(), -SIGKILL) << read("said");
    }
    is_enough = true;
    writer.join();
    Shipper last(folder_.path(), to(receiver, {"--once"}));
    EXPECT_EQ(last.wait(), 0) << read("said");
  }
  void expect_all_received(const FailingCollector& collector, const char* what) const {
    std::set<std::string> written;
    for (int seq = 1; seq <= last_seq_; ++seq) written.insert("h/1/2/" + std::to_string(seq));
    std::set<std::string> received;
    std::size_t all = 0;
    for (const auto& [identity, count] : collector.counts()) {
      received.insert(identity);
      all += static_cast<std::size_t>(count);
    }
    EXPECT_TRUE(received == written) << received.size() << " of " << written.size();
    std::printf("%s: %zu lines, %zu doubles, %d kills\n", what, received.size(), all - received.size(), kills());
  }

  qz_test::SetEnv no_proxy_{"no_proxy", "127.0.0.1"};
  qz_test::SeededRandom random_;
  int last_seq_ = 0;
};

TEST_F(OtlpShipping, KilledWhileFilesRotate_EveryLineIsReceived) {
  FailingCollector collector(0);
  const HttpReceiver receiver([&](const HttpRequest& request) { return collector.answer(request); });
  kill_shippers(receiver);
  expect_all_received(collector, "receiver of OTLP");
}

TEST_F(OtlpShipping, KilledWhileTheReceiverFails_EveryLineIsReceived) {
  FailingCollector collector(10);
  const HttpReceiver receiver([&](const HttpRequest& request) { return collector.answer(request); });
  kill_shippers(receiver);
  expect_all_received(collector, "receiver of OTLP that fails");
}

TEST_F(OtlpShipping, LineThatIsRefused_GoesToTheDeadLettersAndTheRestGoesOn) {
  append("logs/s.20261121.0001", lines(1, 100));
  const HttpReceiver receiver([](const HttpRequest& request) {
    Lines lines;
    add_lines_of_protobuf(request.body, lines);
    HttpReply reply;
    if (lines.count("h/1/2/42") != 0) {
      reply.status = 400;
      reply.body = R"({"message":"not this one"})";
    }
    return reply;
  });
  Shipper shipper(folder_.path(), to(receiver, {"--once", "--metrics", "metrics.json"}));
  EXPECT_EQ(shipper.wait(), 1) << read("said");
  const auto dead = nlohmann::json::parse(read("state.json.dead-letters.jsonl"));
  EXPECT_EQ(dead["reason"], "the receiver answers 400: not this one");
  EXPECT_EQ(dead["identity"], "h/1/2/42");
  EXPECT_EQ(nlohmann::json::parse(read("metrics.json"))["acknowledged"], 99);
}

TEST_F(OtlpShipping, Definitions_GiveTheMessageAndTheTypes) {
  write("d.yaml",
        "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
        "entries:\n  - {id: 1, name: N, message: \"Number {N} came\", attributes: [{name: N, type: UInt4}]}\n");
  append("logs/s.20261121.0001", lines(7, 7));
  const HttpReceiver receiver([](const HttpRequest&) { return HttpReply(); });
  Shipper shipper(folder_.path(), to(receiver, {"--once", "--definitions", "d.yaml", "--option", "encoding=json"}));
  EXPECT_EQ(shipper.wait(), 0) << read("said");
  ASSERT_EQ(receiver.requests().size(), 2U);
  const auto request = nlohmann::json::parse(receiver.requests()[1].body);
  const auto& resource = request["resourceLogs"][0];
  EXPECT_EQ(resource["resource"]["attributes"][0]["value"]["stringValue"], "shop");
  const auto& record = resource["scopeLogs"][0]["logRecords"][0];
  EXPECT_EQ(record["body"]["stringValue"], "Number 7 came");
  EXPECT_EQ(record["attributes"][0]["value"]["intValue"], "7");
}

TEST_F(OtlpShipping, UnknownOption_NamesThoseThatThereAre) {
  append("logs/s.20261121.0001", lines(1, 1));
  Shipper shipper(folder_.path(), {"logs/s", "--to", "otlp+http://127.0.0.1:1", "--state", "state.json", "--once",
                                   "--option", "encodign=json"});
  EXPECT_NE(shipper.wait(), 0);
  EXPECT_NE(read("said").find("there is no --option encodign for this receiver; there are body, certificate, "
                              "compression, encoding, event-name-attribute, key, partial-success, request-bytes, "
                              "span-attribute, trace-attribute"),
            std::string::npos)
      << read("said");
}

}  // namespace
}  // namespace qzlog_test
