// Records to receivers of OTLP logs: otlp+http://HOST:PORT/v1/logs, and otlp+https://. They cannot be read from.
#include <curl/curlver.h>

#include <memory>

#include "ship/otlp/otlp_sender.h"
#include "ship/plugin/plugin_call.h"
#include "ship/transport.h"

namespace {

using qzlog_ship::guarded;

qzlog_outcome open_sender(const qzlog_settings* settings, const qzlog_host* host, uint32_t timeout_ms,
                          qzlog_sender** sender, qzlog_error* error) {
  return guarded(error, [&] { *sender = std::make_unique<qzlog_sender>(*settings, *host, timeout_ms).release(); });
}

qzlog_outcome send(qzlog_sender* sender, const qzlog_record* records, size_t count, uint32_t timeout_ms,
                   qzlog_result* results, qzlog_error* error) {
  return guarded(error, [&] { sender->send(records, count, timeout_ms, results); });
}

void close_sender(qzlog_sender* sender) { delete sender; }

constexpr qzlog_transport kTransport = {QZLOG_TRANSPORT_VERSION,
                                        sizeof(qzlog_transport),
                                        "otlp",
                                        "OpenTelemetry logs over HTTP, libcurl " LIBCURL_VERSION,
                                        open_sender,
                                        send,
                                        close_sender,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr};

}  // namespace

const qzlog_transport* qzlog_ship_transport(void) { return &kTransport; }
