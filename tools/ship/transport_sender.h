#ifndef QZLOG_TOOLS_SHIP_TRANSPORT_SENDER_H
#define QZLOG_TOOLS_SHIP_TRANSPORT_SENDER_H

#include <chrono>
#include <memory>
#include <span>
#include <string>

#include "tools/ship/batch_sender.h"
#include "tools/ship/record_host.h"
#include "tools/transport/transport_plugin.h"
#include "tools/transport/transport_settings.h"

namespace qzlog_tool {

/// Sends by a plug-in. After a failure the connection is made anew.
class TransportSender : public BatchSender {
 public:
  /// All have to outlive this object.
  TransportSender(const TransportPlugin& plugin, const TransportSettings& settings, RecordHost& host);

  qzlog_outcome send(std::span<const qzlog_record> records, std::chrono::milliseconds timeout,
                     std::span<qzlog_result> results, std::string& reason) override;

 private:
  struct Closer {
    const qzlog_transport* transport;
    void operator()(qzlog_sender* sender) const { transport->close_sender(sender); }
  };

  qzlog_outcome open(std::uint32_t timeout, std::string& reason);

  const qzlog_transport& transport_;
  const TransportSettings& settings_;
  RecordHost& host_;
  std::unique_ptr<qzlog_sender, Closer> sender_;
  bool must_reopen_ = false;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_TRANSPORT_SENDER_H
