#include "tools/system/host_name.h"

#include <unistd.h>

namespace qzlog_tool {

std::string host_name() {
  char name[256] = {};
  if (::gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return "localhost";
  return name;
}

}  // namespace qzlog_tool
