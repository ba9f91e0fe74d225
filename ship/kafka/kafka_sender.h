#ifndef QZLOG_SHIP_KAFKA_KAFKA_SENDER_H
#define QZLOG_SHIP_KAFKA_KAFKA_SENDER_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ship/kafka/kafka_client.h"
#include "ship/plugin/patience.h"
#include "ship/transport.h"

/// Writes records to a topic, as an idempotent producer that waits for all replicas in sync.
struct qzlog_sender final : public qzlog_ship::KafkaEvents {
 public:
  qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms);

  void send(std::span<const qzlog_record> records, std::uint32_t timeout_ms, std::span<qzlog_result> results);

 private:
  std::unique_ptr<qzlog_ship::KafkaClient> open(qzlog_ship::KafkaClient::Properties more);
  void produce(qzlog_ship::KafkaClient& client, const qzlog_record& record, qzlog_result& result);
  std::string key_of(const qzlog_record& record);
  void wait(qzlog_ship::KafkaClient& client, qzlog_ship::Patience& patience);
  void send_large(std::span<const qzlog_record> records, std::span<qzlog_result> results,
                  qzlog_ship::Patience& patience);
  void refuse(qzlog_result& result, const std::string& reason);
  void take_report(const rd_kafka_message_t& report) override;

  const qzlog_settings& settings_;
  const qzlog_host& host_;
  std::string key_;  // what keys are: "host", "none", or an attribute's name
  qzlog_ship::KafkaClient::Properties wished_;
  std::unique_ptr<qzlog_ship::KafkaClient> client_;
  std::unique_ptr<qzlog_ship::KafkaClient> one_by_one_;  // for records that were too large together with others

  bool is_hopeless_ = false;  // of the call under way, as all below
  bool is_full_ = false;
  std::string trouble_;
  std::size_t waiting_ = 0;
  std::vector<qzlog_result*> large_;
  std::deque<std::string> reasons_;  // of refusals: they stay where they are
};

#endif  // QZLOG_SHIP_KAFKA_KAFKA_SENDER_H
