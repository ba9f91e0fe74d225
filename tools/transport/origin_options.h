#ifndef QZLOG_TOOLS_TRANSPORT_ORIGIN_OPTIONS_H
#define QZLOG_TOOLS_TRANSPORT_ORIGIN_OPTIONS_H

#include <string>
#include <vector>

#include "tools/transport/log_origin.h"
#include "tools/transport/receiver_options.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Where entries are read from, as the command line says; empty texts were not given.
struct OriginOptions {
  std::string from = {};
  std::string start = {};
  std::string group = {};
  ReceiverOptions receiver = {};
};

/// Adds --from, --start, --group and what receivers are reached with. `options` has to outlive the parsing.
void add_origin_options(CLI::App& command, OriginOptions& options);

/// What they mean together, beside the operands of the command ("-" alone: none were given). Throws CommandError
/// (cannot run) for what contradicts.
LogOrigin read_origin(const OriginOptions& options, const std::vector<std::string>& operands);

/// What help pages say of them, behind their options.
inline constexpr const char* kOriginFooter =
    R"(--from reads what 'qzlog ship' has delivered to a receiver, by its URL
(nats://HOST:PORT/STREAM, kafka://HOST:PORT/TOPIC, file:///FOLDER), the entries
of the system's journal (journal, or journal:NAMESPACE), or those in FILEs with
messages of syslog (syslog). From a receiver, --start says where to begin:
beginning (the default), now, sequence=N or a TIME. All readers with the same
--group share the entries; what one of them has not shown when it ends goes to
another, so that an entry may come again: --unique leaves out what came twice to
one reader. A receiver that is away is waited for.
)";

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_ORIGIN_OPTIONS_H
