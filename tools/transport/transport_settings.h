#ifndef QZLOG_TOOLS_TRANSPORT_TRANSPORT_SETTINGS_H
#define QZLOG_TOOLS_TRANSPORT_TRANSPORT_SETTINGS_H

#include <string>
#include <utility>
#include <vector>

#include "ship/transport.h"
#include "tools/transport/transport_url.h"

namespace qzlog_tool {

/// What a receiver is opened with.
struct TransportOptions {
  std::string ca_file;                                       ///< empty: none
  std::string credentials_file;                              ///< empty: none
  std::vector<std::pair<std::string, std::string>> options;  ///< each key once
  std::string client;
};

/// The same as a plug-in takes it; what it was made from has to outlive it.
class TransportSettings {
 public:
  TransportSettings(const TransportUrl& url, const TransportOptions& options);
  TransportSettings(const TransportSettings&) = delete;
  TransportSettings& operator=(const TransportSettings&) = delete;

  const qzlog_settings& get() const noexcept { return settings_; }

 private:
  std::vector<qzlog_option> options_;
  qzlog_settings settings_;
};

/// What a plug-in says, in one line that a terminal can show.
std::string shown_error(qzlog_error& error);

/// One of the values that are named.
bool is_outcome(int outcome);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_TRANSPORT_SETTINGS_H
