#ifndef QZLOG_SHIP_NATS_NATS_CONNECTION_H
#define QZLOG_SHIP_NATS_NATS_CONNECTION_H

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "ship/nats/nats_handles.h"
#include "ship/transport.h"

namespace qzlog_ship {

/// What a URL nats://HOST:PORT[,...]/STREAM names.
struct NatsPlace {
  std::vector<std::string> servers;  ///< nats://HOST:PORT or tls://HOST:PORT
  std::string stream;

  /// Throws a failure for good where it names no server or no stream.
  explicit NatsPlace(const qzlog_settings& settings);
};

/// A connection to one of several servers, which stays broken once it is. What cannot be done is thrown as a Failure.
/// Its functions are for one thread; libnats has threads of its own, with all signals blocked.
class NatsConnection {
 public:
  NatsConnection(const qzlog_settings& settings, const NatsPlace& place, std::uint32_t timeout_ms);
  ~NatsConnection();
  NatsConnection(const NatsConnection&) = delete;
  NatsConnection& operator=(const NatsConnection&) = delete;

  natsConnection* get() const { return connection_; }
  bool is_broken() const;
  /// The account's permissions that something ran into since the last call; "" where there was none.
  std::string take_violation();
  bool has_violation() const;

  /// Throws what a status and JetStream's code mean, behind what was tried: "cannot read the stream: ...".
  [[noreturn]] void fail(const std::string& tried, natsStatus status, jsErrCode code);
  /// The same, where the status is not NATS_OK.
  void require(const std::string& tried, natsStatus status, jsErrCode code = jsErrCode(0)) {
    if (status != NATS_OK) fail(tried, status, code);
  }

 private:
  void open(const qzlog_settings& settings, const NatsPlace& place, std::uint32_t timeout_ms);
  static void on_error(natsConnection* connection, natsSubscription* subscription, natsStatus status, void* closure);
  static void on_closed(natsConnection* connection, void* closure);

  /// Whether the server belongs to no cluster, of which another member could have what it lacks.
  bool is_alone() const;

  bool has_one_server_;
  natsConnection* connection_ = nullptr;
  mutable std::mutex mutex_;
  std::condition_variable closed_;
  bool is_closed_ = false;  // behind mutex_, as the violation is
  std::string violation_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_NATS_NATS_CONNECTION_H
