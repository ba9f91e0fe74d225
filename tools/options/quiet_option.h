#ifndef QZLOG_TOOLS_OPTIONS_QUIET_OPTION_H
#define QZLOG_TOOLS_OPTIONS_QUIET_OPTION_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds --quiet, which takes effect while `command` is parsed (want_quiet).
void add_quiet_option(CLI::App& command);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_QUIET_OPTION_H
