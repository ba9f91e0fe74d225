#include "tools/temporary_folder.h"

#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/command_error.h"

namespace qzlog_tool {

std::string temporary_location() {
  const char* const folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

TemporaryFolder::TemporaryFolder() : path_(temporary_location() + "/qzlog-XXXXXX") {
  if (::mkdtemp(path_.data()) != nullptr) return;
  throw CommandError(kExitCannotRun,
                     "cannot make a temporary folder in '" + temporary_location() + "': " + std::strerror(errno));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace qzlog_tool
