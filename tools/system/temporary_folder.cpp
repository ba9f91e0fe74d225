#include "tools/system/temporary_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {
namespace {

/// TMPDIR, or /tmp.
std::string temporary_location() {
  const char* const folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

/// Removes files among the folder's first entries. False when there was none to be removed.
bool remove_some_files(int folder) noexcept {
  alignas(dirent64) char entries[4096];
  ::lseek(folder, 0, SEEK_SET);
  const long bytes = ::syscall(SYS_getdents64, folder, entries, sizeof(entries));
  bool has_removed = false;
  for (long at = 0; at < bytes;) {
    const auto* const entry = reinterpret_cast<const dirent64*>(entries + at);
    has_removed = ::unlinkat(folder, entry->d_name, 0) == 0 || has_removed;
    at += entry->d_reclen;
  }
  return has_removed;
}

/// Without taking memory, which readdir does: the folder has to go also when there is none.
void remove_files(const std::string& path) noexcept {
  const FileDescriptor folder(open_path(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  while (remove_some_files(folder.get())) {
  }
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
  remove_files(path_);
  ::rmdir(path_.c_str());
}

}  // namespace qzlog_tool
