// A plug-in that can be delivered to, and not read from.
#include "ship/transport.h"

namespace {

qzlog_outcome open_sender(const qzlog_settings* /*settings*/, const qzlog_host* /*host*/, uint32_t /*timeout_ms*/,
                          qzlog_sender** /*sender*/, qzlog_error* /*error*/) {
  return QZLOG_NEVER;
}
qzlog_outcome send(qzlog_sender* /*sender*/, const qzlog_record* /*records*/, size_t /*count*/, uint32_t /*timeout_ms*/,
                   qzlog_result* /*results*/, qzlog_error* /*error*/) {
  return QZLOG_NEVER;
}
void close_sender(qzlog_sender* /*sender*/) {}

}  // namespace

const qzlog_transport* qzlog_ship_transport(void) {
  static const qzlog_transport transport = {QZLOG_TRANSPORT_VERSION,
                                            sizeof(qzlog_transport),
                                            "deaf",
                                            "for tests",
                                            open_sender,
                                            send,
                                            close_sender,
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nullptr};
  return &transport;
}
