#include "ship/kafka/kafka_sender.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "ship/plugin/plugin_call.h"

using qzlog_ship::fail_for_good;
using qzlog_ship::fail_for_now;
using qzlog_ship::kafka_advice;
using qzlog_ship::KafkaClient;
using qzlog_ship::Patience;
using qzlog_ship::PluginOptions;

namespace {

constexpr int kLook = 100;  // milliseconds
// Of one record with its parts: whether it is too large is the topic's to say.
constexpr const char* kLargestMessage = "67108864";

/// A value as text: a key, which is compared byte by byte.
std::string text_of(const qzlog_value& value) {
  switch (value.kind) {
    case QZLOG_BOOL:
    case QZLOG_INTEGER:
      return std::to_string(value.integer);
    case QZLOG_NUMBER: {
      std::array<char, 32> digits{};
      return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value.number).ptr};
    }
    case QZLOG_TEXT:
    case QZLOG_TIME:
      return std::string(qzlog_ship::view_of(value.text));
    default:
      return "";
  }
}

/// It was taken back, because time was over.
bool is_purged(rd_kafka_resp_err_t error) {
  return error == RD_KAFKA_RESP_ERR__PURGE_QUEUE || error == RD_KAFKA_RESP_ERR__PURGE_INFLIGHT;
}

bool is_too_large(rd_kafka_resp_err_t error) {
  return error == RD_KAFKA_RESP_ERR_MSG_SIZE_TOO_LARGE || error == RD_KAFKA_RESP_ERR_RECORD_LIST_TOO_LARGE;
}

}  // namespace

qzlog_sender::qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms)
    : settings_(settings), host_(host) {
  PluginOptions options(settings);
  key_ = options.take("key").value_or("host");
  wished_ = qzlog_ship::take_properties(options);
  wished_.try_emplace("socket.nagle.disable", "true");  // the end of a batch waits for no acknowledgement of TCP's
  options.refuse_others("key and rdkafka.NAME");
  client_ = open({});
  static_cast<void>(client_->partitions(host_, timeout_ms));  // the topic is there, and may be seen
}

std::unique_ptr<KafkaClient> qzlog_sender::open(KafkaClient::Properties more) {
  more.insert({{"enable.idempotence", "true"}, {"acks", "all"}, {"message.max.bytes", kLargestMessage}});
  return std::make_unique<KafkaClient>(settings_, RD_KAFKA_PRODUCER, more, wished_, *this);
}

void qzlog_sender::send(std::span<const qzlog_record> records, std::uint32_t timeout_ms,
                        std::span<qzlog_result> results) {
  Patience patience(host_, timeout_ms, Patience::kToSend);
  is_hopeless_ = is_full_ = false;
  trouble_.clear();
  large_.clear();
  reasons_.clear();
  for (std::size_t index = 0; index < records.size() && !is_full_; ++index) {
    produce(*client_, records[index], results[index]);
  }
  wait(*client_, patience);
  if (!large_.empty() && trouble_.empty()) send_large(records, results, patience);
  if (is_hopeless_) fail_for_good(trouble_);
  if (!trouble_.empty()) fail_for_now(trouble_);
}

void qzlog_sender::produce(KafkaClient& client, const qzlog_record& record, qzlog_result& result) {
  const std::string key = key_of(record);
  std::array<rd_kafka_vu_t, 6> parts{};
  parts[0].vtype = RD_KAFKA_VTYPE_TOPIC;
  parts[0].u.cstr = client.topic().c_str();
  parts[1].vtype = RD_KAFKA_VTYPE_VALUE;
  parts[1].u.mem = {const_cast<char*>(record.line.bytes), record.line.size};
  parts[2].vtype = RD_KAFKA_VTYPE_HEADER;
  parts[2].u.header = {qzlog_ship::kKafkaIdentity, record.identity.bytes, static_cast<ssize_t>(record.identity.size)};
  parts[3].vtype = RD_KAFKA_VTYPE_OPAQUE;
  parts[3].u.ptr = &result;
  parts[4].vtype = RD_KAFKA_VTYPE_MSGFLAGS;
  parts[4].u.i = RD_KAFKA_MSG_F_COPY;
  parts[5].vtype = RD_KAFKA_VTYPE_KEY;
  parts[5].u.mem = {const_cast<char*>(key.data()), key.size()};
  rd_kafka_error_t* const error = rd_kafka_produceva(client.get(), parts.data(), key.empty() ? 5 : 6);
  if (error == nullptr) {
    ++waiting_;
    return;
  }
  const rd_kafka_resp_err_t code = rd_kafka_error_code(error);
  const std::string text = rd_kafka_error_string(error);
  rd_kafka_error_destroy(error);
  if (is_too_large(code)) return refuse(result, "it is longer than 64 MiB");
  is_full_ = true;  // what is behind it is sent by the next call
  if (code == RD_KAFKA_RESP_ERR__QUEUE_FULL) return;
  trouble_ = "cannot send: " + text + kafka_advice(code, client.topic());
  is_hopeless_ = qzlog_ship::is_for_good(code);
}

std::string qzlog_sender::key_of(const qzlog_record& record) {
  if (key_ == "none") return "";
  if (key_ != "host") return text_of(host_.find_attribute(host_.context, &record, key_.c_str()));
  const std::string_view writer = qzlog_ship::view_of(record.writer);
  return std::string(writer.substr(0, writer.find('/')));
}

// What is not acknowledged in time is taken back: nothing is under way when it returns, and every report has come.
void qzlog_sender::wait(KafkaClient& client, Patience& patience) {
  while (waiting_ > 0 && !patience.is_over() && !is_hopeless_) rd_kafka_flush(client.get(), kLook);
  if (waiting_ > 0) {
    rd_kafka_purge(client.get(), RD_KAFKA_PURGE_F_QUEUE | RD_KAFKA_PURGE_F_INFLIGHT);
    while (waiting_ > 0) rd_kafka_poll(client.get(), kLook);
    if (trouble_.empty()) trouble_ = "not all is acknowledged in time";
  }
  const std::string brokers = client.take_trouble();
  if (!trouble_.empty() && !brokers.empty()) trouble_ += " (" + brokers + ')';
}

// A topic's limit is for what goes there at once.
void qzlog_sender::send_large(std::span<const qzlog_record> records, std::span<qzlog_result> results,
                              Patience& patience) {
  if (one_by_one_ == nullptr) one_by_one_ = open({{"batch.num.messages", "1"}});
  const std::vector<qzlog_result*> large = std::exchange(large_, {});
  for (qzlog_result* const result : large) {
    if (is_full_) break;
    produce(*one_by_one_, records[static_cast<std::size_t>(result - results.data())], *result);
  }
  wait(*one_by_one_, patience);
  for (qzlog_result* const result : large_) refuse(*result, "it is longer than the topic takes (max.message.bytes)");
}

void qzlog_sender::refuse(qzlog_result& result, const std::string& reason) {
  reasons_.push_back(reason);
  result.fate = QZLOG_REFUSED;
  result.reason = reasons_.back().c_str();
}

void qzlog_sender::take_report(const rd_kafka_message_t& report) {
  --waiting_;
  auto& result = *static_cast<qzlog_result*>(report._private);
  if (report.err == RD_KAFKA_RESP_ERR_NO_ERROR) {
    result.fate = QZLOG_ACKNOWLEDGED;
  } else if (is_too_large(report.err)) {
    large_.push_back(&result);
  } else if (report.err == RD_KAFKA_RESP_ERR_INVALID_RECORD) {
    refuse(result, "the topic does not take it: INVALID_RECORD");
  } else if (!is_purged(report.err) && (trouble_.empty() || qzlog_ship::is_for_good(report.err))) {
    is_hopeless_ = qzlog_ship::is_for_good(report.err);
    trouble_ = "the topic '" + client_->topic() + "' does not take it: " + rd_kafka_err2str(report.err) +
               kafka_advice(report.err, client_->topic());
  }
}
