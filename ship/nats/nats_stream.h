#ifndef QZLOG_SHIP_NATS_NATS_STREAM_H
#define QZLOG_SHIP_NATS_NATS_STREAM_H

#include <cstdint>
#include <optional>
#include <string>

#include "ship/nats/nats_connection.h"
#include "ship/plugin/plugin_options.h"

namespace qzlog_ship {

/// How a stream is made where there is none, by `--option create=yes` and others.
struct NatsStreamWish {
  bool create = false;
  bool may_create = false;  ///< whether that can be wished: readers cannot
  std::int64_t replicas = 1;
  std::int64_t window_seconds = 120;  ///< for doubles
  std::int64_t most_bytes = -1;       ///< -1: any
  std::int64_t most_seconds = 0;      ///< that records stay; 0: for ever

  static NatsStreamWish of(PluginOptions& options);
  static constexpr const char* kKnown = "create, replicas, window, max-bytes, max-age";
};

/// What is known of a stream.
class NatsStream {
 public:
  /// Asks for it; makes it first where that is wished. A stream that does not exist is a failure for good.
  NatsStream(NatsConnection& connection, const std::string& name, const NatsStreamWish& wish, std::uint32_t timeout_ms);

  jsCtx* context() const { return context_.get(); }
  const jsStreamInfo& info() const { return *info_; }

  /// What subjects begin with: `wanted`, else what stands before ".>" in one of the stream's. A failure for good where
  /// the stream would not take them.
  std::string prefix(const std::optional<std::string>& wanted) const;
  /// What the operator should know before records go there; "" where all is well.
  std::string warning() const;

 private:
  bool ask(NatsConnection& connection);
  void create(NatsConnection& connection, const NatsStreamWish& wish);
  bool takes(const std::string& subject) const;
  std::string subjects() const;

  std::string name_;
  NatsContextPtr context_;
  NatsStreamInfoPtr info_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_NATS_NATS_STREAM_H
