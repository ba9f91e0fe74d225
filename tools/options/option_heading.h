#ifndef QZLOG_TOOLS_OPTIONS_OPTION_HEADING_H
#define QZLOG_TOOLS_OPTIONS_OPTION_HEADING_H

#include <CLI/CLI.hpp>
#include <string>

namespace qzlog_tool {

/// While it lives, the options that a command is given stand below a heading of their own in its help.
class OptionHeading {
 public:
  OptionHeading(CLI::App& command, const char* heading)
      : command_(command), usual_(command.option_defaults()->get_group()) {
    command_.option_defaults()->group(heading);
  }
  ~OptionHeading() { command_.option_defaults()->group(usual_); }
  OptionHeading(const OptionHeading&) = delete;
  OptionHeading& operator=(const OptionHeading&) = delete;

 private:
  CLI::App& command_;
  const std::string usual_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_OPTION_HEADING_H
