#ifndef QZLOG_SHIP_NATS_NATS_READER_H
#define QZLOG_SHIP_NATS_NATS_READER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ship/nats/nats_connection.h"
#include "ship/nats/nats_stream.h"
#include "ship/transport.h"

/// Reads a stream, alone or as one of a group, which is a durable consumer that its readers pull from. A connection
/// that is lost is made again by the next call; who reads alone goes on behind what it had then.
struct qzlog_reader {
 public:
  qzlog_reader(const qzlog_settings& settings, const qzlog_host& host, const qzlog_start& start,
               std::uint32_t timeout_ms);
  ~qzlog_reader();
  qzlog_reader(const qzlog_reader&) = delete;
  qzlog_reader& operator=(const qzlog_reader&) = delete;

  /// False at the end.
  bool read(std::span<qzlog_received> records, std::uint32_t timeout_ms, std::size_t& count);
  void settle(std::span<const std::uint64_t> tokens, std::uint32_t timeout_ms);

 private:
  using Clock = std::chrono::steady_clock;
  struct Link;
  /// What a group has to be told of a record.
  struct Unsettled {
    std::uint64_t token;
    std::uint64_t sequence;
    std::string address;  // empty: it is settled
  };

  void give_back() noexcept;
  void check(const qzlog_start& start) const;
  void connect(std::uint32_t timeout_ms);
  void begin(const jsStreamState& state);
  std::string made_anew() const;
  void join_group();
  [[noreturn]] void wait_for_group();
  natsStatus make_group(jsConsumerInfo** info, jsErrCode& code);
  void open_alone();
  std::int64_t start_that_can_be_said() const;
  void set_start(jsConsumerConfig& config) const;
  std::int64_t time_for_fetching(Clock::time_point end);
  bool fetch(std::size_t most, std::int64_t timeout_ms);
  void give_out(std::span<qzlog_received> records, std::size_t& count);
  qzlog_ship::NatsMetaDataPtr describe(natsMsg* message);
  void go_on_behind(std::size_t count);
  void tell_of_dropped(std::uint64_t expected);
  bool take(natsMsg* message, const jsMsgMetaData& data, qzlog_received& record);
  qzlog_ship::NatsConsumerInfoPtr ask_consumer();
  void see_whether_end_is_near(std::size_t came, std::size_t asked_for);
  void see_consumer();
  void keep_for_settling(const qzlog_received& record, const char* address);
  bool is_at_end();

  const qzlog_settings& settings_;
  const qzlog_host& host_;
  qzlog_ship::NatsPlace place_;
  qzlog_start start_;
  std::string group_;  // "": it reads alone
  std::int64_t wait_seconds_;
  std::unique_ptr<Link> link_;
  natsMsgList held_ = {};  // what was given out last
  bool was_open_ = false;
  std::optional<Clock::time_point> missed_since_;  // the group
  bool has_told_ = false;
  std::int64_t end_look_ = 10;            // milliseconds
  bool may_end_ = true;                   // and has to be asked for before more is fetched
  std::uint64_t end_ = 0;                 // the stream's last number at opening
  std::uint64_t next_ = 0;                // alone: behind what was given out; 0: nothing yet
  std::uint64_t consumer_next_ = 1;       // alone: the number that the next record has for the consumer
  bool none_left_ = false;                // alone: the last record said that no more follow
  std::uint64_t wanted_ = UINT64_MAX;     // in a group: how many more up to the end, at most
  std::uint64_t not_given_ = UINT64_MAX;  // when the last record was given, to whomever
  std::uint64_t highest_ = 0;             // the last number that was given out
  std::uint64_t known_ = 0;               // and the one when the connection was made
  Clock::time_point seen_;                // when the consumer was heard of
  std::uint64_t next_token_ = 1;
  std::deque<Unsettled> unsettled_;  // by token
};

#endif  // QZLOG_SHIP_NATS_NATS_READER_H
