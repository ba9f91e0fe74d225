// Records to servers of syslog over TCP, encrypted or not: syslog+tcp://HOST:PORT and syslog+tls://HOST:PORT.
#include <openssl/opensslv.h>

#include <memory>

#include "ship/plugin/plugin_call.h"
#include "ship/syslog/syslog_sender.h"
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
                                        "syslog",
                                        "servers of syslog over TCP and TLS, " OPENSSL_VERSION_TEXT,
                                        open_sender,
                                        send,
                                        close_sender,
                                        nullptr,
                                        nullptr,
                                        nullptr,
                                        nullptr};

}  // namespace

const qzlog_transport* qzlog_ship_transport(void) { return &kTransport; }
