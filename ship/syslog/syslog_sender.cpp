#include "ship/syslog/syslog_sender.h"

#include <chrono>

namespace {

constexpr std::size_t kSentAtOnce = std::size_t{256} << 10;

qzlog_ship::Deadline deadline_in(std::uint32_t milliseconds) {
  return std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

}  // namespace

qzlog_sender::qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms)
    : settings_(qzlog_ship::SyslogSettings::of(settings)),
      message_(settings_, host),
      stream_(qzlog_ship::ServerStream::open(settings_, deadline_in(timeout_ms))) {}

void qzlog_sender::send(const qzlog_record* records, std::size_t count, std::uint32_t timeout_ms,
                        qzlog_result* results) {
  const qzlog_ship::Deadline deadline = deadline_in(timeout_ms);
  stream_->look_for_end();
  bytes_.clear();
  for (std::size_t index = 0; index < count; ++index) {
    const char* const refusal = message_.append(records[index], bytes_);
    if (refusal != nullptr) results[index] = {QZLOG_REFUSED, refusal};
    if (bytes_.size() < kSentAtOnce && index + 1 < count) continue;
    stream_->send(bytes_, deadline);
    bytes_.clear();
  }
  stream_->wait_until_confirmed(deadline);
  for (std::size_t index = 0; index < count; ++index) {
    if (results[index].fate == QZLOG_AGAIN) results[index].fate = QZLOG_ACKNOWLEDGED;
  }
}
