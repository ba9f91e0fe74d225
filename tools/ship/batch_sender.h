#ifndef QZLOG_TOOLS_SHIP_BATCH_SENDER_H
#define QZLOG_TOOLS_SHIP_BATCH_SENDER_H

#include <chrono>
#include <span>
#include <string>

#include "ship/transport.h"

namespace qzlog_tool {

/// Brings records to a receiver.
class BatchSender {
 public:
  virtual ~BatchSender() = default;

  /// As qzlog_transport::send, connecting first where it has to; `results` are QZLOG_AGAIN. `reason` is why the outcome
  /// is not QZLOG_DONE, safe to show. Reasons of refusals are valid until the next call.
  virtual qzlog_outcome send(std::span<const qzlog_record> records, std::chrono::milliseconds timeout,
                             std::span<qzlog_result> results, std::string& reason) = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_BATCH_SENDER_H
