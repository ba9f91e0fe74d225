// What `qzlog ship` makes of topics: keys, identities, lines as they were, and what cannot be.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/ship/kafka/kafka_fixture.h"
#include "tests/ship/otlp/hostile_lines.h"
#include "tests/support/seeded_random.h"

namespace qzlog_test {
namespace {

class KafkaSending : public KafkaFixture {
 protected:
  qz_test::SeededRandom random_;
};

TEST_F(KafkaSending, HostileLines_AreEqual) {
  const int count = 20000;
  HostileLines hostile(random_);
  std::multiset<std::string> written;
  std::string text;
  for (int index = 0; index < count; ++index) {
    std::string line = hostile.next().line;
    if (line.find_first_not_of(" \t\r\n") == std::string::npos) continue;
    std::replace(line.begin(), line.end(), '\n', ' ');  // where one line ends, another begins
    written.insert(line);
    text += line + '\n';
  }
  append("logs/s.20261121.0001", text);
  EXPECT_EQ(ship_to(cluster_.url()).status, 1) << "some are no entries at all";
  std::multiset<std::string> received;
  for (const qz_test::KafkaRecord& record : cluster_.records()) received.insert(record.line);
  EXPECT_TRUE(std::includes(written.begin(), written.end(), received.begin(), received.end()));
  const std::string dead = read("state.json.dead-letters.jsonl");
  EXPECT_EQ(received.size() + static_cast<std::size_t>(std::count(dead.begin(), dead.end(), '\n')), written.size());
  EXPECT_GT(received.size(), written.size() / 2);
}

TEST_F(KafkaSending, Records_HaveTheHostAsKeyAndTheIdentity) {
  append("logs/s.20261121.0001", lines(1, 100));
  EXPECT_EQ(ship_to(cluster_.url()).err, "");
  const std::vector<qz_test::KafkaRecord> records = cluster_.records();
  ASSERT_EQ(records.size(), 100U);
  for (std::size_t index = 0; index < records.size(); ++index) {
    EXPECT_EQ(records[index].key, "h");
    EXPECT_EQ(records[index].identity, "h/1/2/" + std::to_string(index + 1)) << "one key is one partition, in order";
    EXPECT_EQ(records[index].line + '\n', line(static_cast<int>(index) + 1));
  }
}

TEST_F(KafkaSending, Keys_AreAnAttributeWhereItIsNamed) {
  append("logs/s.20261121.0001", lines(1, 3));
  EXPECT_EQ(ship_to(cluster_.url(), "--option key=N").err, "");
  std::set<std::string> keys;
  for (const qz_test::KafkaRecord& record : cluster_.records()) keys.insert(record.key);
  EXPECT_EQ(keys, (std::set<std::string>{"1", "2", "3"}));
}

TEST_F(KafkaSending, LinesThatTheTopicDoesNotTake_GoToTheDeadLettersAlone) {
  append("logs/s.20261121.0001", lines(1, 3));
  // The batch, then each of its lines: the second is too large.
  cluster_.fail_next(qz_test::KafkaCluster::kProduce,
                     {RD_KAFKA_RESP_ERR_MSG_SIZE_TOO_LARGE, RD_KAFKA_RESP_ERR_NO_ERROR,
                      RD_KAFKA_RESP_ERR_MSG_SIZE_TOO_LARGE, RD_KAFKA_RESP_ERR_NO_ERROR});
  EXPECT_EQ(ship_to(cluster_.url()).status, 1);
  const std::string dead = read("state.json.dead-letters.jsonl");
  EXPECT_NE(dead.find("it is longer than the topic takes"), std::string::npos) << dead;
  EXPECT_EQ(std::count(dead.begin(), dead.end(), '\n'), 1) << dead;
  EXPECT_EQ(cluster_.records().size(), 2U);
}

TEST_F(KafkaSending, WhatCannotBe_IsOneErrorAndLosesNothing) {
  append("logs/s.20261121.0001", lines(1, 10));
  cluster_.set_topic_error("Closed", RD_KAFKA_RESP_ERR_TOPIC_AUTHORIZATION_FAILED);
  cluster_.set_topic_error("None", RD_KAFKA_RESP_ERR_UNKNOWN_TOPIC_OR_PART);
  const std::vector<std::pair<std::string, std::string>> cases = {
      {cluster_.url("Closed"), "lacks the right to the topic 'Closed': grant it, or name a file with --credentials"},
      {cluster_.url("None"), "there is no topic 'None': make it (kafka-topics.sh --create --topic None)"},
      {"kafka://" + cluster_.brokers(), "the URL names no topic: kafka://HOST:PORT/TOPIC"},
      {"kafka:///T", "the URL names no broker: kafka://HOST:PORT/TOPIC"},
      {cluster_.url("a%20b"), "the URL names no topic"},
      {"kafka+tls" + cluster_.url().substr(5), "there is no scheme 'kafka+tls': write kafka:// or kafka+ssl://"},
      {cluster_.url() + " --option rdkafka.acks=1",
       "--option rdkafka.acks is not the operator's to set: such may weaken what is acknowledged"},
      {cluster_.url() + " --option rdkafka.test.mock.num.brokers=3",
       "--option rdkafka.test.mock.num.brokers is not the operator's to set"},
      {cluster_.url() + " --option rdkafka.delivery.report.only.error=true",
       "--option rdkafka.delivery.report.only.error is not the operator's to set"},
      {cluster_.url() + " --option rdkafka.linger.ms=never", "cannot set linger.ms"},
      {cluster_.url() + " --option keys=host", "there is no --option keys for this receiver"}};
  for (const auto& [url, reason] : cases) {
    const CommandResult result = run("$QZLOG ship logs/s --once --state other.json --to " + url);
    std::filesystem::remove(folder_.path("other.json"));
    EXPECT_EQ(result.status, 2) << url;
    EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
  }
  EXPECT_EQ(ship_to(cluster_.url()).err, "");
  expect_all(10);
}

TEST_F(KafkaSending, BrokersWithoutTls_GetNothingAndAreTold) {
  append("logs/s.20261121.0001", lines(1, 1));
  const std::string url = "kafka+ssl://" + cluster_.brokers() + "/T";
  const CommandResult result = run("timeout 3 $QZLOG ship logs/s --to " + url + " --state state.json --once");
  EXPECT_EQ(result.status, 124);
  EXPECT_NE(result.err.find("SSL_HANDSHAKE"), std::string::npos) << result.err;
  EXPECT_EQ(cluster_.records().size(), 0U);
}

}  // namespace
}  // namespace qzlog_test
