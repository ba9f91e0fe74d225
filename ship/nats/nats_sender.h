#ifndef QZLOG_SHIP_NATS_NATS_SENDER_H
#define QZLOG_SHIP_NATS_NATS_SENDER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>

#include "ship/nats/nats_connection.h"
#include "ship/nats/nats_stream.h"
#include "ship/plugin/patience.h"
#include "ship/transport.h"

/// Publishes records to a stream, all of a batch before the first acknowledgement is waited for. Each has an address of
/// its own for its acknowledgement, so that none is taken for another's.
struct qzlog_sender {
 public:
  qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms);

  void send(std::span<const qzlog_record> records, std::uint32_t timeout_ms, std::span<qzlog_result> results);

 private:
  /// What is wished, before anything is opened: a slip is to be known at once.
  struct Wishes {
    explicit Wishes(const qzlog_settings& settings);

    qzlog_ship::NatsStreamWish stream;
    std::optional<std::string> prefix;
  };

  qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, const Wishes& wishes, std::uint32_t timeout_ms);
  void open_inbox();
  void publish_all(std::span<const qzlog_record> records, std::span<qzlog_result> results);
  bool publish(const qzlog_record& record, qzlog_result& result);
  qzlog_ship::NatsMessagePtr make_message(const qzlog_record& record);
  void take_answers(qzlog_ship::Patience& patience, std::span<qzlog_result> results);
  qzlog_ship::NatsMessagePtr next_answer(qzlog_ship::Patience& patience);
  void take_answer(natsMsg& message, std::span<qzlog_result> results);
  void take_error(unsigned code, const std::string& text, qzlog_result& result);
  void refuse(qzlog_result& result, const std::string& reason);
  std::size_t index_of(const char* subject) const;

  const qzlog_host& host_;
  qzlog_ship::NatsPlace place_;
  qzlog_ship::NatsConnection connection_;
  qzlog_ship::NatsStream stream_;
  std::string prefix_;
  std::string inbox_;  // what addresses of acknowledgements begin with
  qzlog_ship::NatsSubscriptionPtr answers_;

  std::uint64_t first_number_ = 0;  // of the batch under way
  std::uint64_t next_number_ = 1;
  std::size_t waiting_ = 0;          // records without an answer
  std::deque<std::string> reasons_;  // of refusals: they stay where they are
  std::string trouble_;              // why a record was not taken now
  bool is_hopeless_ = false;         // and it will not be until somebody helps
  std::string subject_;
  std::string address_;
  std::string identity_;
};

#endif  // QZLOG_SHIP_NATS_NATS_SENDER_H
