#include "tools/system/quiet.h"

namespace qzlog_tool {

namespace {

bool quiet_is_wanted = false;  // of the process; set before there is another thread

}  // namespace

void want_quiet() noexcept { quiet_is_wanted = true; }

bool is_quiet() noexcept { return quiet_is_wanted; }

}  // namespace qzlog_tool
