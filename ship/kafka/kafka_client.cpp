#include "ship/kafka/kafka_client.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "ship/plugin/credentials_file.h"
#include "ship/plugin/patience.h"
#include "ship/plugin/plugin_call.h"
#include "ship/plugin/signals_blocked.h"

namespace qzlog_ship {

namespace {

constexpr std::string_view kPropertyPrefix = "rdkafka.";
constexpr int kClosingMilliseconds = 1000;
constexpr int kLookMilliseconds = 1000;

// Beginnings of names: what would load code, name other receivers (or brokers within the process, which are for tests),
// hold secrets, or weaken or keep back what is acknowledged.
constexpr std::string_view kRefused[] = {"acks",
                                         "bootstrap.servers",
                                         "debug",
                                         "delivery.report",
                                         "enable.auto",
                                         "enable.idempotence",
                                         "enable.partition",
                                         "enable.sasl",
                                         "enable.ssl",
                                         "group.",
                                         "interceptors",
                                         "max.in.flight",
                                         "message.send.max",
                                         "metadata.broker.list",
                                         "opaque",
                                         "partition.assignment",
                                         "plugin.library",
                                         "request.required.acks",
                                         "retries",
                                         "sasl.",
                                         "security.",
                                         "ssl.",
                                         "test.",
                                         "transactional"};

std::string text_of(rd_kafka_resp_err_t error) { return rd_kafka_err2str(error); }

void set(rd_kafka_conf_t* config, const std::string& name, const std::string& value) {
  std::array<char, 256> reason{};
  if (rd_kafka_conf_set(config, name.c_str(), value.c_str(), reason.data(), reason.size()) == RD_KAFKA_CONF_OK) return;
  const bool is_secret = name.find("password") != std::string::npos;
  fail_for_good("cannot set " + name + (is_secret ? "" : ": " + std::string(reason.data())));
}

/// Sets what the file has; returns whether there is somebody to log in.
bool set_credentials(rd_kafka_conf_t* config, const std::string& path) {
  CredentialsFile credentials(path, read_credentials(path));
  const std::optional<std::string> user = credentials.take("username");
  const std::pair<const char*, const char*> names[] = {{"password", "sasl.password"},
                                                       {"certificate", "ssl.certificate.location"},
                                                       {"key", "ssl.key.location"},
                                                       {"key-password", "ssl.key.password"}};
  const std::optional<std::string> mechanism = credentials.take("mechanism");
  bool has_password = false;
  for (const auto& [key, property] : names) {
    const std::optional<std::string> value = credentials.take(key);
    if (!value) continue;
    has_password = has_password || std::string_view(key) == "password";
    set(config, property, *value);
  }
  credentials.refuse_others("username, password, mechanism, certificate, key and key-password");
  if (user.has_value() != has_password) fail_for_good("the credentials lack one of username and password");
  if (!user && mechanism) fail_for_good("the credentials have a mechanism and no username");
  if (!user) return false;
  set(config, "sasl.username", *user);
  set(config, "sasl.mechanism", mechanism.value_or("PLAIN"));
  return true;
}

bool is_topic_name(const std::string& name) {
  return !name.empty() && name.size() <= 249 && name != "." && name != ".." &&
         std::all_of(name.begin(), name.end(), [](char character) {
           return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
                  (character >= 'a' && character <= 'z') || character == '.' || character == '_' || character == '-';
         });
}

// What there is to say is said in errors; lines of its own would go to standard error.
void no_log(const rd_kafka_t* /*client*/, int /*level*/, const char* /*facility*/, const char* /*text*/) {}

}  // namespace

bool is_for_good(rd_kafka_resp_err_t error) {
  switch (error) {
    case RD_KAFKA_RESP_ERR__SSL:
    case RD_KAFKA_RESP_ERR__AUTHENTICATION:
    case RD_KAFKA_RESP_ERR__UNKNOWN_TOPIC:
    case RD_KAFKA_RESP_ERR__UNKNOWN_PARTITION:
    case RD_KAFKA_RESP_ERR__INVALID_ARG:
    case RD_KAFKA_RESP_ERR_UNKNOWN_TOPIC_OR_PART:
    case RD_KAFKA_RESP_ERR_TOPIC_EXCEPTION:
    case RD_KAFKA_RESP_ERR_TOPIC_AUTHORIZATION_FAILED:
    case RD_KAFKA_RESP_ERR_GROUP_AUTHORIZATION_FAILED:
    case RD_KAFKA_RESP_ERR_CLUSTER_AUTHORIZATION_FAILED:
    case RD_KAFKA_RESP_ERR_SASL_AUTHENTICATION_FAILED:
    case RD_KAFKA_RESP_ERR_UNSUPPORTED_SASL_MECHANISM:
    case RD_KAFKA_RESP_ERR_SECURITY_DISABLED:
      return true;
    default:
      return false;
  }
}

std::string kafka_advice(rd_kafka_resp_err_t error, const std::string& topic) {
  switch (error) {
    case RD_KAFKA_RESP_ERR__UNKNOWN_TOPIC:
    case RD_KAFKA_RESP_ERR_UNKNOWN_TOPIC_OR_PART:
      return ": there is no topic '" + topic + "': make it (kafka-topics.sh --create --topic " + topic + ')';
    case RD_KAFKA_RESP_ERR_TOPIC_AUTHORIZATION_FAILED:
      return ": who is speaking lacks the right to the topic '" + topic +
             "': grant it, or name a file with --credentials";
    case RD_KAFKA_RESP_ERR_CLUSTER_AUTHORIZATION_FAILED:
      return ": who is speaking lacks the right to write without doubles: grant IdempotentWrite";
    case RD_KAFKA_RESP_ERR__SSL:
      return ": name the certificates to trust with --ca";
    case RD_KAFKA_RESP_ERR__AUTHENTICATION:
    case RD_KAFKA_RESP_ERR_SASL_AUTHENTICATION_FAILED:
      return ": name a file with --credentials";
    default:
      return "";
  }
}

std::map<std::string, std::string> take_properties(PluginOptions& options) {
  std::map<std::string, std::string> properties;
  for (auto& [key, value] : options.take_all(std::string(kPropertyPrefix))) {
    const std::string name = key.substr(kPropertyPrefix.size());
    for (const std::string_view refused : kRefused) {
      if (name.starts_with(refused)) {
        fail_for_good("--option " + key +
                      " is not the operator's to set: such may weaken what is acknowledged, lead elsewhere, hold "
                      "secrets or load code");
      }
    }
    properties.emplace(name, value);
  }
  return properties;
}

KafkaClient::KafkaClient(const qzlog_settings& settings, rd_kafka_type_t type, const Properties& own,
                         const Properties& wished, KafkaEvents& events)
    : events_(events) {
  const SignalsBlocked blocked;
  read_url(settings);
  KafkaConfigPtr config = make_config(settings);
  for (const Properties* const properties : {&wished, &own}) {
    for (const auto& [name, value] : *properties) set(config.get(), name, value);
  }
  set_callbacks(config.get(), type);
  std::array<char, 256> reason{};
  client_ = rd_kafka_new(type, config.get(), reason.data(), reason.size());
  if (client_ == nullptr) fail_for_good(reason.data());
  static_cast<void>(config.release());  // the client has it
}

void KafkaClient::set_callbacks(rd_kafka_conf_t* config, rd_kafka_type_t type) {
  rd_kafka_conf_set_opaque(config, this);
  rd_kafka_conf_set_log_cb(config, no_log);
  rd_kafka_conf_set_error_cb(config, [](rd_kafka_t*, int error, const char* reason, void* opaque) {
    of(opaque).add_trouble(static_cast<rd_kafka_resp_err_t>(error), reason);
  });
  if (type == RD_KAFKA_PRODUCER) {
    rd_kafka_conf_set_dr_msg_cb(config, [](rd_kafka_t*, const rd_kafka_message_t* report, void* opaque) {
      of(opaque).events_.take_report(*report);
    });
  } else {
    rd_kafka_conf_set_rebalance_cb(
        config, [](rd_kafka_t* client, rd_kafka_resp_err_t what, rd_kafka_topic_partition_list_t* partitions,
                   void* opaque) { of(opaque).events_.share(client, what, *partitions); });
  }
}

// The destruction waits for threads, and not for brokers.
KafkaClient::~KafkaClient() {
  if (rd_kafka_type(client_) == RD_KAFKA_PRODUCER) {
    rd_kafka_purge(client_, RD_KAFKA_PURGE_F_QUEUE | RD_KAFKA_PURGE_F_INFLIGHT);
    rd_kafka_flush(client_, kClosingMilliseconds);
  }
  rd_kafka_destroy(client_);
}

void KafkaClient::read_url(const qzlog_settings& settings) {
  require_scheme(settings, "kafka", "kafka+ssl");
  brokers_ = settings.authority;
  topic_ = percent_decoded(settings.path);
  if (!topic_.empty()) topic_.erase(0, 1);
  const std::string form = std::string(settings.scheme) + "://HOST:PORT/TOPIC";
  if (brokers_.empty() || brokers_.front() == ',' || brokers_.find(",,") != std::string::npos) {
    fail_for_good("the URL names no broker: " + form);
  }
  if (!is_topic_name(topic_)) fail_for_good("the URL names no topic: " + form);
}

KafkaConfigPtr KafkaClient::make_config(const qzlog_settings& settings) {
  KafkaConfigPtr config(rd_kafka_conf_new());
  set(config.get(), "bootstrap.servers", brokers_);
  std::string client = settings.client;
  std::replace_if(
      client.begin(), client.end(), [](char character) { return character == ' ' || character == '/'; }, '-');
  set(config.get(), "client.id", client);
  const bool logs_in = settings.credentials_file != nullptr && set_credentials(config.get(), settings.credentials_file);
  const bool is_secure = std::string_view(settings.scheme) == "kafka+ssl";
  set(config.get(), "security.protocol", std::string(logs_in ? "sasl_" : "") + (is_secure ? "ssl" : "plaintext"));
  if (!is_secure && settings.ca_file != nullptr) fail_for_good("--ca is for kafka+ssl://");
  if (settings.ca_file != nullptr) set(config.get(), "ssl.ca.location", settings.ca_file);
  return config;
}

rd_kafka_resp_err_t KafkaClient::ask(const qzlog_host& host, std::uint32_t timeout_ms,
                                     const struct rd_kafka_metadata*& answer) {
  const KafkaTopicPtr topic(rd_kafka_topic_new(client_, topic_.c_str(), nullptr));
  Patience patience(host, timeout_ms, Patience::kToOpen);
  rd_kafka_resp_err_t error = RD_KAFKA_RESP_ERR__TIMED_OUT;
  do {
    error = rd_kafka_metadata(client_, 0, topic.get(), &answer, kLookMilliseconds);
    rd_kafka_poll(client_, 0);  // what brokers said
    const bool may_pass = error == RD_KAFKA_RESP_ERR__TIMED_OUT || error == RD_KAFKA_RESP_ERR__TRANSPORT;
    if (!may_pass || !trouble_.empty()) return error;
  } while (!patience.is_over());
  return error;
}

std::vector<std::int32_t> KafkaClient::partitions(const qzlog_host& host, std::uint32_t timeout_ms) {
  const struct rd_kafka_metadata* made = nullptr;
  const rd_kafka_resp_err_t error = ask(host, timeout_ms, made);
  if (error != RD_KAFKA_RESP_ERR_NO_ERROR) fail("cannot ask for the topic '" + topic_ + "'", error);
  const std::unique_ptr<const struct rd_kafka_metadata, KafkaFree<rd_kafka_metadata_destroy>> data(made);
  if (data->topic_cnt != 1) fail_for_now("the broker says nothing of the topic '" + topic_ + "'");
  if (data->topics[0].err != RD_KAFKA_RESP_ERR_NO_ERROR) fail("cannot use the topic", data->topics[0].err);
  std::vector<std::int32_t> numbers;
  numbers.reserve(static_cast<std::size_t>(std::max(data->topics[0].partition_cnt, 0)));
  for (int index = 0; index < data->topics[0].partition_cnt; ++index) {
    numbers.push_back(data->topics[0].partitions[index].id);
  }
  if (numbers.empty()) fail_for_now("the topic '" + topic_ + "' has no partitions yet");
  return numbers;
}

void KafkaClient::fail(const std::string& tried, rd_kafka_resp_err_t error) {
  rd_kafka_poll(client_, 0);  // what brokers said
  const std::string trouble = take_trouble();
  const std::string text = tried + ": " + (trouble.empty() ? text_of(error) : trouble) + kafka_advice(error, topic_);
  if (is_for_good(error)) fail_for_good(text);
  fail_for_now(text);
}

std::string KafkaClient::take_trouble() {
  std::string text = std::exchange(trouble_, "");
  if (is_hopeless_) fail_for_good(text);
  return text;
}

void KafkaClient::add_trouble(rd_kafka_resp_err_t error, const char* text) {
  if (is_hopeless_ || (error == RD_KAFKA_RESP_ERR__ALL_BROKERS_DOWN && !trouble_.empty())) return;
  is_hopeless_ = is_for_good(error);
  const bool speaks_plain = std::string_view(text).find("wrong version number") != std::string_view::npos;
  const std::string advice =
      speaks_plain ? ": it speaks without TLS: name it as kafka://" : kafka_advice(error, topic_);
  trouble_ = text + (is_hopeless_ ? advice : "");
}

}  // namespace qzlog_ship
