#ifndef QZLOG_SINKS_SYSLOG_CONTENT_H
#define QZLOG_SINKS_SYSLOG_CONTENT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "sinks/syslog_fit.h"

namespace qzlog {

/// What of a message of syslog stands behind its header, each part as it is written there.
struct SyslogContent {
  bool is_rfc5424 = true;                          ///< false: the older form, with the structured data at the end
  std::string_view element;                        ///< "[qzlog@NUMBER"; empty where there are no structured data
  std::string_view entry_head;                     ///< the value of the parameter `entry`: its beginning
  std::string_view entry;                          ///< and the rest of it
  std::string_view parameters;                     ///< of the attributes: ` Name="vol1" Free="0"`
  const std::vector<std::size_t>& parameter_ends;  ///< where they end in it
  std::string_view text;                           ///< the readable message
};

/// What of it the message has.
struct SyslogContentFit {
  SyslogFit fit;
  bool is_shortened = false;
};

/// Room for what number_syslog_bytes puts in front.
constexpr std::size_t kSyslogRoomBefore = 12;

/// Appends it to a message of which `before` bytes stand at the end of `out`, as much of it as a message of `limit`
/// bytes has room for. std::bad_alloc.
SyslogContentFit append_syslog_content(const SyslogContent& content, std::size_t before, std::size_t limit,
                                       std::string& out);

/// Puts the number of its bytes and a blank in front of a message (RFC 6587, "octet counting"), which stands in `out`
/// from `begin` on behind kSyslogRoomBefore bytes of no use. Where the number begins.
std::size_t number_syslog_bytes(std::string& out, std::size_t begin) noexcept;

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_CONTENT_H
