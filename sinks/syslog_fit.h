#ifndef QZLOG_SINKS_SYSLOG_FIT_H
#define QZLOG_SINKS_SYSLOG_FIT_H

#include <cstddef>
#include <vector>

namespace qzlog {

/// The bytes of a message's parts.
struct SyslogSizes {
  std::size_t fixed = 0;                           ///< what is always there
  std::size_t entry = 0;                           ///< the parameter `entry`
  const std::vector<std::size_t>& parameter_ends;  ///< of the others, where they end if one follows the other
  std::size_t text = 0;
};

/// What of them the message has.
struct SyslogFit {
  bool has_entry = true;
  std::size_t parameters = 0;  ///< their bytes
  std::size_t omitted = 0;     ///< how many parameters are missing, the entry among them
  std::size_t text = 0;        ///< its bytes, fewer than there are where it is cut
};

/// Within so many bytes there are as many of the attributes' parameters as there is room for; without any of them as
/// much of the text as there is room for; without room for the entry none of it.
SyslogFit fit_syslog(const SyslogSizes& sizes, std::size_t limit);

/// The bytes of the parameter that says how many are missing, at most.
constexpr std::size_t kMostOmittedBytes = 32;

}  // namespace qzlog

#endif  // QZLOG_SINKS_SYSLOG_FIT_H
