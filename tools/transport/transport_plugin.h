#ifndef QZLOG_TOOLS_TRANSPORT_TRANSPORT_PLUGIN_H
#define QZLOG_TOOLS_TRANSPORT_TRANSPORT_PLUGIN_H

#include <string>

#include "ship/transport.h"
#include "tools/transport/transport_url.h"

namespace qzlog_tool {

/// Where plug-ins are installed, seen from the command's own place, so that it may be moved with them; where they were
/// to be installed if that does not exist.
std::string installed_plugins();

/// The plug-in that speaks to a kind of receivers. It stays loaded to the end of the process: its library may have
/// threads and handlers that outlive its use.
class TransportPlugin {
 public:
  /// Loads ship-NAME.so from the folder. Throws CommandError (cannot run): for a scheme that nobody knows, with those
  /// that are known; for a plug-in that is not installed, with the package that has it; for one that is of another
  /// version or cannot be loaded.
  TransportPlugin(const TransportUrl& url, const std::string& folder);

  const qzlog_transport& transport() const noexcept { return *transport_; }
  /// Its receivers can be read from.
  bool can_read() const noexcept { return transport_->open_reader != nullptr; }
  const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
  const qzlog_transport* transport_ = nullptr;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_TRANSPORT_PLUGIN_H
