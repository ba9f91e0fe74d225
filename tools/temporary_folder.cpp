#include "tools/temporary_folder.h"

#include <fcntl.h>
#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/command_error.h"
#include "tools/file_descriptor.h"

namespace qzlog_tool {
namespace {

/// TMPDIR, or /tmp.
std::string temporary_location() {
  const char* const folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

}  // namespace

TemporaryFolder::TemporaryFolder() : path_(temporary_location() + "/qzlog-XXXXXX") {
  if (::mkdtemp(path_.data()) != nullptr) return;
  throw CommandError(kExitCannotRun,
                     "cannot make a temporary folder in '" + temporary_location() + "': " + std::strerror(errno));
}

std::string TemporaryFolder::add_file(const std::string& name, std::string_view content) const {
  std::string path = path_ + '/' + name;
  FileDescriptor file(open_path(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (file.get() < 0) refuse_to_write(path, errno);
  const int written = write_all(file.get(), content.data(), content.size());
  if (written != 0) refuse_to_write(path, written);
  const int closed = file.close();
  if (closed != 0) refuse_to_write(path, closed);
  return path;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace qzlog_tool
