#ifndef QZLOG_SINKS_SYSLOG_NAME_H
#define QZLOG_SINKS_SYSLOG_NAME_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qzlog {

/// Names in messages of syslog (RFC 5424: SD-NAME, and MSGID): 1 to 32 printable characters of ASCII.
constexpr std::size_t kMostSyslogName = 32;

/// The structured data of ours are called so, with "@" and the enterprise number behind it.
constexpr std::string_view kSyslogElement = "qzlog";
/// The parameters that are no attributes: the entry's line, and how many parameters are missing.
constexpr std::string_view kSyslogEntry = "entry";
constexpr std::string_view kSyslogOmitted = "omitted";

constexpr bool is_syslog_name_character(char character) {
  return character > ' ' && character <= '~' && character != '=' && character != ']' && character != '"';
}

/// Appends what the name of an attribute or event becomes: each character that may not be is an underscore, and what is
/// too long is cut.
inline void append_syslog_name(std::string_view name, std::string& out) {
  std::size_t count = 0;
  for (const char character : name) {
    const bool continues_character = (static_cast<unsigned char>(character) & 0xC0U) == 0x80;
    if (continues_character) continue;
    if (++count > kMostSyslogName) return;
    out += is_syslog_name_character(character) ? character : '_';
  }
}

/// The name as receivers have it that make no difference between upper and lower case, as rsyslog does.
inline std::string lowered_syslog_name(std::string_view name) {
  std::string lowered;
  append_syslog_name(name, lowered);
  for (char& character : lowered) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
  }
  return lowered;
}

/// Whether the name is that of a parameter which is no attribute, for such receivers.
inline bool is_own_syslog_name(std::string_view name) {
  if (name.size() != kSyslogEntry.size() && name.size() != kSyslogOmitted.size()) return false;
  const std::string lowered = lowered_syslog_name(name);
  return lowered == kSyslogEntry || lowered == kSyslogOmitted;
}

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_NAME_H
