#ifndef QZLOG_SHIP_SYSLOG_RECORD_MESSAGE_H
#define QZLOG_SHIP_SYSLOG_RECORD_MESSAGE_H

#include <cstddef>
#include <string>
#include <vector>

#include "ship/syslog/syslog_settings.h"
#include "ship/transport.h"

namespace qzlog_ship {

/// Makes messages of syslog (RFC 5424) from records, as a qz_LOG_SyslogSink makes them from entries.
class RecordMessage {
 public:
  /// Both have to outlive this object.
  RecordMessage(const SyslogSettings& settings, const qzlog_host& host);

  /// Appends the message behind its number of bytes. Null; or why it cannot be sent, and nothing is appended.
  const char* append(const qzlog_record& record, std::string& out);

 private:
  void append_header(const qzlog_record& record);
  void append_moment(const qzlog_record& record);
  void append_writer(const qzlog_record& record);
  void take_parameters(const qzlog_record& record);
  void take_parameter(const qzlog_attribute& attribute);
  void take_text(const qzlog_record& record);

  const SyslogSettings& settings_;
  const qzlog_host& host_;
  std::string own_host_;  // for lines that name no writer
  std::string too_long_;  // why a record is refused
  std::string element_;   // [qzlog@NUMBER

  std::string message_;
  std::string entry_;
  std::string parameters_;
  std::vector<std::size_t> parameter_ends_;
  std::string text_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_SYSLOG_RECORD_MESSAGE_H
