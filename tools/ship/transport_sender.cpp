#include "tools/ship/transport_sender.h"

#include <algorithm>

namespace qzlog_tool {

TransportSender::TransportSender(const TransportPlugin& plugin, const TransportSettings& settings, RecordHost& host)
    : transport_(plugin.transport()), settings_(settings), host_(host), sender_(nullptr, Closer{&transport_}) {}

qzlog_outcome TransportSender::open(std::uint32_t timeout, std::string& reason) {
  qzlog_error error = {};
  qzlog_sender* sender = nullptr;
  host_.forget();
  const qzlog_outcome outcome = transport_.open_sender(&settings_.get(), &host_.host(), timeout, &sender, &error);
  if (outcome == QZLOG_DONE && sender != nullptr) {
    sender_.reset(sender);
    return QZLOG_DONE;
  }
  reason = shown_error(error);
  return outcome == QZLOG_LATER ? QZLOG_LATER : QZLOG_NEVER;
}

qzlog_outcome TransportSender::send(std::span<const qzlog_record> records, std::chrono::milliseconds timeout,
                                    std::span<qzlog_result> results, std::string& reason) {
  const auto milliseconds = static_cast<std::uint32_t>(std::clamp<long long>(timeout.count(), 1, 3'600'000));
  if (must_reopen_) sender_.reset();
  must_reopen_ = false;
  if (sender_ == nullptr) {
    const qzlog_outcome opened = open(milliseconds, reason);
    if (opened != QZLOG_DONE) return opened;
  }
  qzlog_error error = {};
  host_.forget();
  const qzlog_outcome outcome =
      transport_.send(sender_.get(), records.data(), records.size(), milliseconds, results.data(), &error);
  if (outcome == QZLOG_DONE) return outcome;
  reason = shown_error(error);
  must_reopen_ = true;  // at the next call: reasons of refusals are the sender's
  return is_outcome(outcome) ? outcome : QZLOG_NEVER;
}

}  // namespace qzlog_tool
