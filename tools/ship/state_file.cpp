#include "tools/ship/state_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/ship/own_file.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr mode_t kPermissions = 0640;

[[noreturn]] void refuse(const std::string& text) { throw CommandError(kExitCannotRun, text); }

std::string first_line(int descriptor) {
  char text[64];
  const ssize_t count = ::pread(descriptor, text, sizeof text, 0);
  const std::string line(text, count > 0 ? static_cast<std::size_t>(count) : 0);
  return line.substr(0, line.find('\n'));
}

FileDescriptor take_lock(const std::string& state) {
  const std::string path = state + ".lock";
  FileDescriptor lock = open_own_file(path, O_RDWR, kPermissions);
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

}  // namespace

StateFile::StateFile(std::string path) : path_(std::move(path)), lock_(take_lock(path_)) { sign(lock_); }

std::optional<ShipState> StateFile::read() const {
  struct stat status = {};
  if (::stat(path_.c_str(), &status) != 0 && errno == ENOENT) return std::nullopt;
  try {
    return parse_state(read_to_end(open_regular_file(path_), path_));
  } catch (const BadState& fault) {
    refuse("the state '" + path_ + "' cannot be used: " + fault.what() +
           ". Put a copy of it back; or remove it: everything that the logs have is then delivered again, what the "
           "receiver has already a second time");
  }
}

void StateFile::write(const ShipState& state) {
  const std::string fault = replace_own_file(path_, state_text(state), kPermissions, OnDisk::kBeforeItIsSeen);
  if (!fault.empty()) refuse("cannot write '" + path_ + "': " + fault);
}

}  // namespace qzlog_tool
