#ifndef QZLOG_SHIP_KAFKA_KAFKA_READER_H
#define QZLOG_SHIP_KAFKA_KAFKA_READER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ship/kafka/kafka_client.h"
#include "ship/kafka/settled_offsets.h"
#include "ship/transport.h"

/// Reads the partitions of a topic: all of them alone, or those that a consumer group leaves to this reader.
struct qzlog_reader final : public qzlog_ship::KafkaEvents {
 public:
  qzlog_reader(const qzlog_settings& settings, const qzlog_host& host, const qzlog_start& start,
               std::uint32_t timeout_ms);
  ~qzlog_reader();

  /// False at the end.
  bool read(std::span<qzlog_received> records, std::uint32_t timeout_ms, std::size_t& count);
  void settle(std::span<const std::uint64_t> tokens, std::uint32_t timeout_ms);

 private:
  using Clock = std::chrono::steady_clock;
  struct Place {
    std::int32_t partition;
    std::int64_t offset;
  };

  void learn_end(std::uint32_t timeout_ms);
  void assign_all(std::uint32_t timeout_ms);
  void join();
  void share(rd_kafka_t* client, rd_kafka_resp_err_t what, rd_kafka_topic_partition_list_t& partitions) override;
  void begin_where_nobody_was(rd_kafka_topic_partition_list_t& partitions);
  void set_start(rd_kafka_topic_partition_list_t& partitions, std::uint32_t timeout_ms);
  std::int64_t sequence_in(std::int32_t partition, std::uint32_t timeout_ms);
  void require_all(const std::string& tried, rd_kafka_resp_err_t error, rd_kafka_topic_partition_list_t& partitions);
  void tell_group(std::uint32_t timeout_ms);
  void fetch(std::span<qzlog_received> records, Clock::time_point end, std::size_t& count);
  bool take(qzlog_ship::KafkaMessagePtr message, qzlog_received& record);
  bool is_behind_end(std::int32_t partition, std::int64_t offset) const;
  void pause(std::int32_t partition);
  bool is_at_end(std::uint32_t timeout_ms);
  bool group_is_at_end(std::uint32_t timeout_ms);

  qzlog_start start_;
  std::string group_;         // "": it reads alone
  bool must_rejoin_ = false;  // it could not find out where its partitions begin
  std::unique_ptr<qzlog_ship::KafkaClient> client_;
  std::vector<std::int32_t> partitions_;
  std::map<std::int32_t, std::int64_t> ends_;       // of each partition at opening; empty where it follows
  std::map<std::int32_t, std::int64_t> positions_;  // the next offset of each partition that it reads
  std::vector<qzlog_ship::KafkaMessagePtr> held_;   // what was given out last
  std::map<std::uint64_t, Place> unsettled_;        // by token
  std::map<std::int32_t, qzlog_ship::SettledOffsets> settled_;
  std::uint64_t next_token_ = 1;
};

#endif  // QZLOG_SHIP_KAFKA_KAFKA_READER_H
