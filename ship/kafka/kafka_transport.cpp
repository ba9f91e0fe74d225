// Records to topics of Kafka, and back: kafka://HOST:PORT[,...]/TOPIC, kafka+ssl://...
#include <memory>

#include "ship/kafka/kafka_reader.h"
#include "ship/kafka/kafka_sender.h"
#include "ship/plugin/plugin_call.h"
#include "ship/plugin/signals_blocked.h"
#include "ship/transport.h"

namespace {

using qzlog_ship::guarded;
using qzlog_ship::SignalsBlocked;

qzlog_outcome open_sender(const qzlog_settings* settings, const qzlog_host* host, uint32_t timeout_ms,
                          qzlog_sender** sender, qzlog_error* error) {
  return guarded(error, [&] { *sender = std::make_unique<qzlog_sender>(*settings, *host, timeout_ms).release(); });
}

qzlog_outcome send(qzlog_sender* sender, const qzlog_record* records, size_t count, uint32_t timeout_ms,
                   qzlog_result* results, qzlog_error* error) {
  return guarded(error, [&] { sender->send({records, count}, timeout_ms, {results, count}); });
}

void close_sender(qzlog_sender* sender) { delete sender; }

qzlog_outcome open_reader(const qzlog_settings* settings, const qzlog_host* host, const qzlog_start* start,
                          uint32_t timeout_ms, qzlog_reader** reader, qzlog_error* error) {
  return guarded(error,
                 [&] { *reader = std::make_unique<qzlog_reader>(*settings, *host, *start, timeout_ms).release(); });
}

qzlog_outcome read(qzlog_reader* reader, qzlog_received* records, size_t most, uint32_t timeout_ms, size_t* count,
                   int32_t* at_end, qzlog_error* error) {
  return guarded(error, [&] {
    const SignalsBlocked blocked;
    *count = 0;
    *at_end = reader->read({records, most}, timeout_ms, *count) ? 0 : 1;
  });
}

qzlog_outcome settle(qzlog_reader* reader, const uint64_t* tokens, size_t count, uint32_t timeout_ms,
                     qzlog_error* error) {
  return guarded(error, [&] { reader->settle({tokens, count}, timeout_ms); });
}

void close_reader(qzlog_reader* reader) { delete reader; }

constexpr qzlog_transport kTransport = {QZLOG_TRANSPORT_VERSION,
                                        sizeof(qzlog_transport),
                                        "kafka",
                                        "Kafka, by librdkafka",
                                        open_sender,
                                        send,
                                        close_sender,
                                        open_reader,
                                        read,
                                        settle,
                                        close_reader};

}  // namespace

const qzlog_transport* qzlog_ship_transport(void) { return &kTransport; }
