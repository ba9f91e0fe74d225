#ifndef QZLOG_CONFIG_CONFIGURATION_FORMAT_H
#define QZLOG_CONFIG_CONFIGURATION_FORMAT_H

namespace qzlog {

/// So many bytes a line of a configuration file may have: a longer one is not read, and nothing behind it.
inline constexpr int kMostConfigurationLineBytes = 128;

}  // namespace qzlog

#endif  // QZLOG_CONFIG_CONFIGURATION_FORMAT_H
