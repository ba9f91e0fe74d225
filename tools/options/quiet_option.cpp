#include "tools/options/quiet_option.h"

#include <CLI/CLI.hpp>

#include "tools/system/quiet.h"

namespace qzlog_tool {

void add_quiet_option(CLI::App& command) {
  command.add_flag_callback("--quiet", want_quiet, "Show no progress, and no summary of what was passed over");
}

}  // namespace qzlog_tool
