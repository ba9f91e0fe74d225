#ifndef QZLOG_SHIP_KAFKA_KAFKA_CLIENT_H
#define QZLOG_SHIP_KAFKA_KAFKA_CLIENT_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ship/kafka/kafka_handles.h"
#include "ship/plugin/plugin_options.h"
#include "ship/transport.h"

namespace qzlog_ship {

/// The header that records carry their identity in.
inline constexpr const char* kKafkaIdentity = "qzlog-identity";

/// What `--option rdkafka.NAME=VALUE` says, by NAME. Those that would break what is promised are refused.
std::map<std::string, std::string> take_properties(PluginOptions& options);

/// What librdkafka tells whoever uses a client, while one of its functions is called.
class KafkaEvents {
 public:
  KafkaEvents() = default;
  KafkaEvents(const KafkaEvents&) = delete;
  KafkaEvents& operator=(const KafkaEvents&) = delete;

  /// A record was written, or was not.
  virtual void take_report(const rd_kafka_message_t& /*report*/) {}
  /// Partitions are given to this member of a group, or taken from it.
  virtual void share(rd_kafka_t* /*client*/, rd_kafka_resp_err_t /*what*/,
                     rd_kafka_topic_partition_list_t& /*partitions*/) {}

 protected:
  ~KafkaEvents() = default;
};

/// A producer or a consumer of librdkafka, which has threads of its own, with all signals blocked. What cannot be done
/// is thrown as a Failure.
class KafkaClient {
 public:
  using Properties = std::map<std::string, std::string>;

  /// `own` is what the caller needs, `wished` what the command line says.
  KafkaClient(const qzlog_settings& settings, rd_kafka_type_t type, const Properties& own, const Properties& wished,
              KafkaEvents& events);
  ~KafkaClient();
  KafkaClient(const KafkaClient&) = delete;
  KafkaClient& operator=(const KafkaClient&) = delete;

  rd_kafka_t* get() const { return client_; }
  const std::string& topic() const { return topic_; }

  /// The numbers of the topic's partitions, asked of a broker; less is waited where the command is to end, or brokers
  /// say what is wrong.
  std::vector<std::int32_t> partitions(const qzlog_host& host, std::uint32_t timeout_ms);
  /// Throws what an error means, behind what was tried.
  [[noreturn]] void fail(const std::string& tried, rd_kafka_resp_err_t error);
  void require(const std::string& tried, rd_kafka_resp_err_t error) {
    if (error != RD_KAFKA_RESP_ERR_NO_ERROR) fail(tried, error);
  }
  /// What librdkafka told of brokers since the last call, "" if nothing; thrown where waiting does not help.
  std::string take_trouble();

 private:
  void read_url(const qzlog_settings& settings);
  rd_kafka_resp_err_t ask(const qzlog_host& host, std::uint32_t timeout_ms, const struct rd_kafka_metadata*& answer);
  KafkaConfigPtr make_config(const qzlog_settings& settings);
  void set_callbacks(rd_kafka_conf_t* config, rd_kafka_type_t type);
  void add_trouble(rd_kafka_resp_err_t error, const char* text);
  static KafkaClient& of(void* opaque) { return *static_cast<KafkaClient*>(opaque); }

  KafkaEvents& events_;
  std::string brokers_;
  std::string topic_;
  std::string trouble_;
  bool is_hopeless_ = false;
  rd_kafka_t* client_ = nullptr;
};

/// Whether nobody gets further by waiting, and what to do, where that is known: ": name a file with --credentials".
bool is_for_good(rd_kafka_resp_err_t error);
std::string kafka_advice(rd_kafka_resp_err_t error, const std::string& topic);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_KAFKA_KAFKA_CLIENT_H
