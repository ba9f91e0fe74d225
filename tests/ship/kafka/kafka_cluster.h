#ifndef QZLOG_TESTS_SHIP_KAFKA_KAFKA_CLUSTER_H
#define QZLOG_TESTS_SHIP_KAFKA_KAFKA_CLUSTER_H

#include <librdkafka/rdkafka.h>
#include <librdkafka/rdkafka_mock.h>

#include <cstdint>
#include <string>
#include <vector>

namespace qz_test {

/// A record as another client than the plug-in reads it.
struct KafkaRecord {
  std::int32_t partition;
  std::string key;
  std::string identity;
  std::string line;
};

/// Three brokers in threads of this process, by librdkafka, with the topic T, which keeps 5 MB in each partition.
class KafkaCluster {
 public:
  static constexpr int kBrokers = 3;
  // Of Kafka's protocol: the kinds of requests that are made to fail.
  static constexpr std::int16_t kProduce = 0;
  static constexpr std::int16_t kMetadata = 3;

  explicit KafkaCluster(int partitions);
  ~KafkaCluster();
  KafkaCluster(const KafkaCluster&) = delete;
  KafkaCluster& operator=(const KafkaCluster&) = delete;

  std::string brokers() const;
  std::string url(const std::string& topic = "T") const { return "kafka://" + brokers() + '/' + topic; }
  void set_down(int broker);
  void set_up(int broker);
  /// How long each answer of a broker takes.
  void set_delay(int broker, int milliseconds);
  /// The answers to the next requests of a kind.
  void fail_next(std::int16_t kind, const std::vector<rd_kafka_resp_err_t>& errors);
  void set_topic_error(const std::string& topic, rd_kafka_resp_err_t error);

  /// All that the topic has, partition by partition.
  std::vector<KafkaRecord> records() const;

 private:
  rd_kafka_t* host_;
  rd_kafka_mock_cluster_t* cluster_;
  int partitions_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SHIP_KAFKA_KAFKA_CLUSTER_H
