#include "tools/ship/state_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "tools/logs/log_inputs.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr mode_t kPermissions = 0640;

[[noreturn]] void refuse(const std::string& text) { throw CommandError(kExitCannotRun, text); }

/// Some file systems have nothing to wait for, and say so.
int sync_to_disk(int descriptor) {
  while (::fsync(descriptor) != 0) {
    if (errno == EINVAL || errno == ENOTSUP) return 0;
    if (errno != EINTR) return errno;
  }
  return 0;
}

std::string first_line(int descriptor) {
  char text[64];
  const ssize_t count = ::pread(descriptor, text, sizeof text, 0);
  const std::string line(text, count > 0 ? static_cast<std::size_t>(count) : 0);
  return line.substr(0, line.find('\n'));
}

FileDescriptor take_lock(const std::string& state) {
  const std::string path = state + ".lock";
  FileDescriptor lock(open_path(path, O_RDWR | O_CREAT | O_CLOEXEC, kPermissions));
  if (lock.get() < 0) refuse_to_write(path, errno);
  int error = 0;
  while (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
    error = errno;
    if (error != EINTR) break;
    error = 0;
  }
  if (error == EWOULDBLOCK) {
    const std::string owner = first_line(lock.get());
    refuse("another 'qzlog ship'" + (owner.empty() ? "" : " (process " + owner + ")") + " uses the state '" + state +
           "': one at a time can; name another one with --state to deliver to another receiver");
  }
  if (error != 0) refuse("cannot lock '" + path + "': " + std::strerror(error));
  return lock;
}

// For those who ask who has the lock. Whether it can be written does not matter.
void sign(const FileDescriptor& lock) {
  const std::string owner = std::to_string(::getpid()) + '\n';
  if (::ftruncate(lock.get(), 0) == 0) {
    [[maybe_unused]] const ssize_t count = ::pwrite(lock.get(), owner.data(), owner.size(), 0);
  }
}

void write_new(const std::string& path, const std::string& content) {
  FileDescriptor file(open_path(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kPermissions));
  if (file.get() < 0) refuse_to_write(path, errno);
  int error = write_all(file.get(), content.data(), content.size());
  if (error == 0) error = sync_to_disk(file.get());
  const int closed = file.close();
  if (error == 0) error = closed;
  if (error != 0) refuse_to_write(path, error);
}

void sync_folder(const std::string& folder) {
  const FileDescriptor opened(open_path(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.get() >= 0) sync_to_disk(opened.get());
}

}  // namespace

StateFile::StateFile(std::string path) : path_(std::move(path)), lock_(take_lock(path_)) { sign(lock_); }

std::optional<ShipState> StateFile::read() const {
  struct stat status = {};
  if (::stat(path_.c_str(), &status) != 0 && errno == ENOENT) return std::nullopt;
  try {
    return parse_state(read_file(path_));
  } catch (const BadState& fault) {
    refuse(
        "the state '" + path_ + "' cannot be used: " + fault.what() +
        ". Put a copy of it back; or remove it: everything that the logs have is then delivered again, and receivers "
        "drop what they have");
  }
}

// The name of the new file is always the same, so that a process that is killed leaves one behind at most.
void StateFile::write(const ShipState& state) {
  const std::string written = path_ + ".new";
  write_new(written, state_text(state));
  if (::rename(written.c_str(), path_.c_str()) != 0) refuse_to_write(path_, errno);
  sync_folder(folder_of(path_));
}

}  // namespace qzlog_tool
