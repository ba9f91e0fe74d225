#ifndef QZLOG_TOOLS_OPTIONS_RAW_OPTION_H
#define QZLOG_TOOLS_OPTIONS_RAW_OPTION_H

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Adds --raw, which takes effect while `command` is parsed (want_raw_texts).
void add_raw_option(CLI::App& command);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_RAW_OPTION_H
