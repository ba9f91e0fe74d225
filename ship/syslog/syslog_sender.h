#ifndef QZLOG_SHIP_SYSLOG_SYSLOG_SENDER_H
#define QZLOG_SHIP_SYSLOG_SYSLOG_SENDER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "ship/syslog/record_message.h"
#include "ship/syslog/server_stream.h"
#include "ship/syslog/syslog_settings.h"
#include "ship/transport.h"

/// Sends records to a server of syslog. Syslog has no acknowledgement: a record counts as acknowledged when the
/// server's system has confirmed all bytes of its batch and the connection stands.
struct qzlog_sender {
 public:
  qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms);

  void send(const qzlog_record* records, std::size_t count, std::uint32_t timeout_ms, qzlog_result* results);

 private:
  qzlog_ship::SyslogSettings settings_;
  qzlog_ship::RecordMessage message_;
  const qzlog_host& host_;
  std::unique_ptr<qzlog_ship::ServerStream> stream_;
  std::string bytes_;
};

#endif  // QZLOG_SHIP_SYSLOG_SYSLOG_SENDER_H
