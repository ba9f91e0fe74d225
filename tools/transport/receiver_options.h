#ifndef QZLOG_TOOLS_TRANSPORT_RECEIVER_OPTIONS_H
#define QZLOG_TOOLS_TRANSPORT_RECEIVER_OPTIONS_H

#include <string>
#include <vector>

#include "tools/transport/transport_settings.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// How a receiver is reached, as the command line says; empty texts were not given.
struct ReceiverOptions {
  std::string ca_file = {};
  std::string credentials_file = {};
  std::vector<std::string> options = {};
  std::string plugins = {};

  bool is_given() const {
    return !ca_file.empty() || !credentials_file.empty() || !options.empty() || !plugins.empty();
  }
  std::string plugin_folder() const;
};

/// Adds --ca, --credentials, --option and --plugins. `options` has to outlive the parsing.
void add_receiver_options(CLI::App& command, ReceiverOptions& options);

/// For what `program` ("qzlog-ship") opens. Throws CommandError (cannot run) for an option that is given twice.
TransportOptions transport_options(const ReceiverOptions& options, const std::string& program);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_RECEIVER_OPTIONS_H
