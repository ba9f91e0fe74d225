#include "tools/system/standard_input.h"

#include <algorithm>

#include "tools/system/command_error.h"

namespace qzlog_tool {

void refuse_repeated_standard_input(const std::vector<std::string>& paths) {
  if (std::count(paths.begin(), paths.end(), "-") <= 1) return;
  throw CommandError(kExitCannotRun, "standard input can be read for one file only");
}

}  // namespace qzlog_tool
