#include "ship/syslog/syslog_sender.h"

#include "ship/plugin/patience.h"

using qzlog_ship::Patience;

namespace {

constexpr std::size_t kSentAtOnce = std::size_t{256} << 10;

std::unique_ptr<qzlog_ship::ServerStream> open_stream(const qzlog_ship::SyslogSettings& settings,
                                                      const qzlog_host& host, std::uint32_t timeout_ms) {
  Patience patience(host, timeout_ms, Patience::kToOpen);
  return qzlog_ship::ServerStream::open(settings, patience);
}

}  // namespace

qzlog_sender::qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms)
    : settings_(qzlog_ship::SyslogSettings::of(settings)),
      message_(settings_, host),
      host_(host),
      stream_(open_stream(settings_, host, timeout_ms)) {}

void qzlog_sender::send(const qzlog_record* records, std::size_t count, std::uint32_t timeout_ms,
                        qzlog_result* results) {
  Patience patience(host_, timeout_ms, Patience::kToSend);
  stream_->look_for_end();
  bytes_.clear();
  for (std::size_t index = 0; index < count; ++index) {
    const char* const refusal = message_.append(records[index], bytes_);
    if (refusal != nullptr) results[index] = {QZLOG_REFUSED, refusal};
    if (bytes_.size() < kSentAtOnce && index + 1 < count) continue;
    stream_->send(bytes_, patience);
    bytes_.clear();
  }
  stream_->wait_until_confirmed(patience);
  for (std::size_t index = 0; index < count; ++index) {
    if (results[index].fate == QZLOG_AGAIN) results[index].fate = QZLOG_ACKNOWLEDGED;
  }
}
