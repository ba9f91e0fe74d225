#include "tools/options/raw_option.h"

#include <CLI/CLI.hpp>

#include "tools/system/terminal_text.h"

namespace qzlog_tool {

void add_raw_option(CLI::App& command) {
  command.add_flag_callback("--raw", want_raw_texts, "Show control characters on a terminal as they are");
}

}  // namespace qzlog_tool
