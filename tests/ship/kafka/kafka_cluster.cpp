#include "tests/ship/kafka/kafka_cluster.h"

#include <gtest/gtest.h>

#include <array>

namespace qz_test {

namespace {

constexpr int kPatience = 10'000;  // milliseconds

rd_kafka_t* make_client(rd_kafka_type_t type, const std::vector<std::pair<const char*, std::string>>& settings) {
  rd_kafka_conf_t* const config = rd_kafka_conf_new();
  std::array<char, 256> reason{};
  for (const auto& [name, value] : settings) {
    EXPECT_EQ(rd_kafka_conf_set(config, name, value.c_str(), reason.data(), reason.size()), RD_KAFKA_CONF_OK);
  }
  rd_kafka_conf_set_log_cb(config, [](const rd_kafka_t*, int, const char*, const char*) {});
  rd_kafka_t* const client = rd_kafka_new(type, config, reason.data(), reason.size());
  EXPECT_NE(client, nullptr) << reason.data();
  return client;
}

KafkaRecord record_of(const rd_kafka_message_t& message) {
  KafkaRecord record = {message.partition,
                        {static_cast<const char*>(message.key), message.key_len},
                        "",
                        {static_cast<const char*>(message.payload), message.len}};
  rd_kafka_headers_t* headers = nullptr;
  const void* value = nullptr;
  std::size_t size = 0;
  if (rd_kafka_message_headers(&message, &headers) == RD_KAFKA_RESP_ERR_NO_ERROR &&
      rd_kafka_header_get_last(headers, "qzlog-identity", &value, &size) == RD_KAFKA_RESP_ERR_NO_ERROR) {
    record.identity.assign(static_cast<const char*>(value), size);
  }
  return record;
}

}  // namespace

KafkaCluster::KafkaCluster(int partitions)
    : host_(make_client(RD_KAFKA_PRODUCER, {{"socket.nagle.disable", "true"}})),  // as real brokers answer: at once
      cluster_(rd_kafka_mock_cluster_new(host_, kBrokers)),
      partitions_(partitions) {
  EXPECT_EQ(rd_kafka_mock_topic_create(cluster_, "T", partitions, kBrokers), RD_KAFKA_RESP_ERR_NO_ERROR);
}

KafkaCluster::~KafkaCluster() {
  rd_kafka_mock_cluster_destroy(cluster_);
  rd_kafka_destroy(host_);
}

std::string KafkaCluster::brokers() const { return rd_kafka_mock_cluster_bootstraps(cluster_); }

void KafkaCluster::set_down(int broker) { rd_kafka_mock_broker_set_down(cluster_, broker); }
void KafkaCluster::set_up(int broker) { rd_kafka_mock_broker_set_up(cluster_, broker); }

void KafkaCluster::set_delay(int broker, int milliseconds) {
  rd_kafka_mock_broker_set_rtt(cluster_, broker, milliseconds);
}

void KafkaCluster::fail_next(std::int16_t kind, const std::vector<rd_kafka_resp_err_t>& errors) {
  rd_kafka_mock_push_request_errors_array(cluster_, kind, errors.size(), errors.data());
}

void KafkaCluster::set_topic_error(const std::string& topic, rd_kafka_resp_err_t error) {
  rd_kafka_mock_topic_set_error(cluster_, topic.c_str(), error);
}

std::vector<KafkaRecord> KafkaCluster::records() const {
  rd_kafka_t* const client = make_client(
      RD_KAFKA_CONSUMER, {{"bootstrap.servers", brokers()}, {"group.id", "test"}, {"enable.partition.eof", "true"}});
  rd_kafka_topic_partition_list_t* const list = rd_kafka_topic_partition_list_new(partitions_);
  for (int partition = 0; partition < partitions_; ++partition) {
    rd_kafka_topic_partition_list_add(list, "T", partition)->offset = RD_KAFKA_OFFSET_BEGINNING;
  }
  EXPECT_EQ(rd_kafka_assign(client, list), RD_KAFKA_RESP_ERR_NO_ERROR);
  rd_kafka_topic_partition_list_destroy(list);
  std::vector<KafkaRecord> records;
  for (int ends = 0; ends < partitions_;) {
    rd_kafka_message_t* const message = rd_kafka_consumer_poll(client, kPatience);
    if (message == nullptr) {
      ADD_FAILURE() << "a partition does not end";
      break;
    }
    if (message->err == RD_KAFKA_RESP_ERR__PARTITION_EOF) ++ends;
    if (message->err == RD_KAFKA_RESP_ERR_NO_ERROR) records.push_back(record_of(*message));
    rd_kafka_message_destroy(message);
  }
  rd_kafka_consumer_close(client);
  rd_kafka_destroy(client);
  return records;
}

}  // namespace qz_test
