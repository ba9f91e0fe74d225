#include "tools/ship/own_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/logs/log_inputs.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr const char* kLink = "it is a link; name the file that it leads to";
constexpr const char* kNoFile = "it is no regular file";

/// Some file systems have nothing to wait for, and say so.
int sync_to_disk(int descriptor) {
  while (::fsync(descriptor) != 0) {
    if (errno == EINVAL || errno == ENOTSUP) return 0;
    if (errno != EINTR) return errno;
  }
  return 0;
}

void sync_folder(const std::string& folder) {
  const FileDescriptor opened(open_path(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.get() >= 0) sync_to_disk(opened.get());
}

/// Why a path cannot be replaced; null where it can.
const char* fault_of(const std::string& path) {
  struct stat status = {};
  if (::lstat(path.c_str(), &status) != 0) return nullptr;  // opening tells what else there is
  if (S_ISLNK(status.st_mode)) return kLink;
  return S_ISREG(status.st_mode) ? nullptr : kNoFile;
}

// What a process that was killed left there is removed, and so is a link: it is not written through.
int write_new(const std::string& path, std::string_view content, mode_t mode, OnDisk on_disk) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) return errno;
  FileDescriptor file(open_path(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
  if (file.get() < 0) return errno;
  int error = write_all(file.get(), content.data(), content.size());
  if (error == 0 && on_disk == OnDisk::kBeforeItIsSeen) error = sync_to_disk(file.get());
  const int closed = file.close();
  return error != 0 ? error : closed;
}

/// Nobody else would remove it: the next one may have another name.
std::string give_up(const std::string& written, int error) {
  ::unlink(written.c_str());
  return std::strerror(error);
}

}  // namespace

FileDescriptor open_own_file(const std::string& path, int flags, mode_t mode) {
  FileDescriptor file(open_path(path, flags | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, mode));
  const auto refuse = [&path](const char* reason) {
    throw CommandError(kExitCannotRun, "cannot write '" + path + "': " + reason);
  };
  if (file.get() < 0) {
    if (errno == ELOOP) refuse(kLink);
    refuse_to_write(path, errno);
  }
  struct stat status = {};
  if (::fstat(file.get(), &status) != 0) refuse_to_write(path, errno);
  if (!S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode)) refuse(kNoFile);
  return file;
}

// The name of the new file is always the same, so that a process that is killed leaves one behind at most.
std::string replace_own_file(const std::string& path, std::string_view content, mode_t mode, OnDisk on_disk) {
  if (const char* const fault = fault_of(path)) return fault;
  const std::string written = path + ".new";
  const int error = write_new(written, content, mode, on_disk);
  if (error != 0) return give_up(written, error);
  if (::rename(written.c_str(), path.c_str()) != 0) return give_up(written, errno);
  if (on_disk == OnDisk::kBeforeItIsSeen) sync_folder(folder_of(path));
  return "";
}

}  // namespace qzlog_tool
