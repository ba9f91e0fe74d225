#ifndef QZLOG_SHIP_KAFKA_KAFKA_HANDLES_H
#define QZLOG_SHIP_KAFKA_KAFKA_HANDLES_H

#include <librdkafka/rdkafka.h>

#include <memory>

namespace qzlog_ship {

/// What librdkafka gives out, freed with its own function.
template <auto Free>
struct KafkaFree {
  template <class Handle>
  void operator()(Handle* handle) const noexcept {
    Free(handle);
  }
};

using KafkaConfigPtr = std::unique_ptr<rd_kafka_conf_t, KafkaFree<rd_kafka_conf_destroy>>;
using KafkaTopicPtr = std::unique_ptr<rd_kafka_topic_t, KafkaFree<rd_kafka_topic_destroy>>;
using KafkaPartitionsPtr =
    std::unique_ptr<rd_kafka_topic_partition_list_t, KafkaFree<rd_kafka_topic_partition_list_destroy>>;
using KafkaQueuePtr = std::unique_ptr<rd_kafka_queue_t, KafkaFree<rd_kafka_queue_destroy>>;
using KafkaEventPtr = std::unique_ptr<rd_kafka_event_t, KafkaFree<rd_kafka_event_destroy>>;
using KafkaMessagePtr = std::unique_ptr<rd_kafka_message_t, KafkaFree<rd_kafka_message_destroy>>;

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_KAFKA_KAFKA_HANDLES_H
