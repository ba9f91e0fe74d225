#ifndef QZLOG_SHIP_SYSLOG_SYSLOG_SETTINGS_H
#define QZLOG_SHIP_SYSLOG_SYSLOG_SETTINGS_H

#include <cstddef>
#include <string>

#include "ship/transport.h"

namespace qzlog_ship {

/// What a URL syslog+tcp://HOST:PORT or syslog+tls://HOST:PORT and the options with it say.
struct SyslogSettings {
  std::string host;  ///< a name or an address, without brackets
  std::string port;  ///< digits
  bool is_encrypted = false;
  std::string ca_file;           ///< empty: the certificates of the system
  std::string credentials_file;  ///< a certificate of our own and its key; may be empty
  std::string application;       ///< empty: the product's name
  unsigned facility = 1;
  unsigned enterprise_number = 32473;
  std::size_t largest_message_bytes = 8096;

  /// Throws a failure for good, which says what is wrong.
  static SyslogSettings of(const qzlog_settings& settings);
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_SYSLOG_SYSLOG_SETTINGS_H
