#ifndef QZLOG_SINKS_SYSLOG_MESSAGE_H
#define QZLOG_SINKS_SYSLOG_MESSAGE_H

#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>

#include "qzlog/syslog_sink.h"
#include "sinks/syslog_fit.h"
#include "sinks/syslog_parts.h"

namespace qzlog {

/// Puts messages of syslog together, one at a time.
class SyslogMessage {
 public:
  /// Of this process, whose program's name is taken where the settings have no other. std::bad_alloc.
  explicit SyslogMessage(const qz_LOG_SyslogSinkSettings& settings);

  /// The message as it is sent, with the head of its line, valid until the next one is made. std::bad_alloc.
  std::string_view make(const SyslogParts& parts, std::string_view line_head, const std::timespec& now);

  /// What of the last message there was no room for.
  const SyslogFit& fit() const { return fit_; }
  bool is_shortened() const { return is_shortened_; }

 private:
  void append_header(const SyslogParts& parts, const std::timespec& now);
  void append_moment(const std::timespec& now);
  void append_body(const SyslogParts& parts);
  std::string_view framed();

  const bool is_rfc5424_;
  const bool has_entry_;
  const bool is_counted_;
  const std::size_t limit_;
  const unsigned facility_;
  std::string before_event_;  // between the time and the event's name, or the text
  std::string element_;       // [qzlog@NUMBER

  std::string text_;
  std::string head_;  // of the line, as it stands in a parameter
  std::string moment_;
  std::time_t moment_second_ = -1;
  SyslogFit fit_;
  bool is_shortened_ = false;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_MESSAGE_H
