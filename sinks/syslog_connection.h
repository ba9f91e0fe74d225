#ifndef QZLOG_SINKS_SYSLOG_CONNECTION_H
#define QZLOG_SINKS_SYSLOG_CONNECTION_H

#include <string>
#include <string_view>
#include <vector>

#include "foundation/descriptor.h"
#include "foundation/no_copies.h"
#include "qzlog/syslog_sink.h"
#include "sinks/host_lookup.h"
#include "sinks/sent_messages.h"

namespace qzlog {

/// Told of messages that were sent and did not arrive.
class LostMessages {
 public:
  virtual void message_lost(const SentMessage& message) noexcept = 0;

 protected:
  ~LostMessages() = default;
};

/// A connection to a syslog server, made again when it breaks, at growing distances. One thread at a time; nothing
/// waits beyond its deadline, in SinkClock::steady_milliseconds().
class SyslogConnection : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Both have to outlive this object.
  SyslogConnection(const qz_LOG_SyslogSinkSettings& settings, LostMessages& lost);

  /// Whether there is a connection. One is made if it is time to. std::bad_alloc.
  bool open(long long deadline);
  /// Sends a message. False when it was not taken. A message that a TCP connection took in part is sent to its end with
  /// the next one, or by flush. std::bad_alloc.
  bool send(std::string_view bytes, const SentMessage& message, long long deadline);
  /// Whether the other side has confirmed all; of datagrams, that they were sent.
  bool flush(long long deadline);
  /// Flushes, and ends the connection for good. How many messages about entries are left that are not confirmed; these
  /// are told as lost.
  unsigned long long close(long long deadline);
  /// In a process that fork made: leaves the connection to the parent.
  void abandon() noexcept { socket_.reset(); }

  /// What was waited for last did not come: the next one is not waited for.
  bool is_stalled() const { return is_stalled_; }
  bool is_up() const { return state_ == State::kUp; }
  unsigned long long connections() const { return connections_; }
  const std::string& failure() const { return failure_; }

 private:
  enum class State { kDown, kLookingUp, kConnecting, kUp };
  enum class Result { kTaken, kNotTaken, kBroken };

  bool is_tcp() const { return settings_.transport == qz_LOG_SyslogSinkSettings::kTcp; }
  bool is_udp() const { return settings_.transport == qz_LOG_SyslogSinkSettings::kUdp; }

  // How it begins.
  void begin_attempt();
  bool finish_lookup(long long deadline);
  bool finish_connecting(long long deadline);
  void try_next_address();
  int start_connecting(const SocketAddress& address);
  void take_up();
  void fail_attempt(const std::string& reason);
  void pause_before_next();

  // Messages go.
  Result send_once(std::string_view bytes, const SentMessage& message, long long deadline);
  Result send_datagram(std::string_view bytes, const SentMessage& message, long long deadline);
  Result send_rest(long long deadline);
  Result result_of(int error);
  void forget_refused_datagram();
  bool is_ended_by_peer();
  std::size_t unconfirmed() const;
  unsigned long long tell_unconfirmed() noexcept;
  void drop() noexcept;

  const qz_LOG_SyslogSinkSettings& settings_;
  LostMessages& lost_;
  HostLookup lookup_;
  State state_ = State::kDown;
  Descriptor socket_;
  std::vector<SocketAddress> addresses_;  // of this attempt
  std::size_t next_address_ = 0;
  long long attempt_end_ = 0;   // when connecting to this address is given up
  long long next_attempt_ = 0;  // not before
  long long pause_ = 0;         // before it
  long long up_since_ = 0;
  long long looked_at_ = 0;  // when the peer was found to be there
  bool is_stalled_ = false;
  std::string rest_;  // of a message that a stream took in part
  SentMessages sent_;
  SentMessage last_datagram_;
  bool has_last_datagram_ = false;
  unsigned long long connections_ = 0;
  std::string failure_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_CONNECTION_H
