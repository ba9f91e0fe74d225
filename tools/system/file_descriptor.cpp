#include "tools/system/file_descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr int kInvalid = -1;
constexpr std::size_t kReadBytes = std::size_t{64} << 10;

[[noreturn]] void refuse_to_open(const std::string& path, const std::string& reason) {
  throw CommandError(kExitCannotRun, "cannot open '" + path + "': " + reason);
}

}  // namespace

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, kInvalid)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    close();
    descriptor_ = std::exchange(other.descriptor_, kInvalid);
  }
  return *this;
}

FileDescriptor::~FileDescriptor() { close(); }

// An interrupted close has closed.
int FileDescriptor::close() noexcept {
  const int descriptor = std::exchange(descriptor_, kInvalid);
  if (descriptor <= STDERR_FILENO || ::close(descriptor) == 0 || errno == EINTR) return 0;
  return errno;
}

int open_path(const std::string& path, int flags, unsigned mode) noexcept {
  int descriptor = kInvalid;
  do {
    descriptor = ::open(path.c_str(), flags, mode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

std::string display_name(const std::string& path) { return path == "-" ? "<stdin>" : path; }

FileDescriptor open_input(const std::string& path) {
  if (path == "-") return FileDescriptor(STDIN_FILENO);
  const int descriptor = open_path(path, O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) refuse_to_open(path, std::strerror(errno));
  return FileDescriptor(descriptor);
}

FileDescriptor open_regular_file(const std::string& path) {
  FileDescriptor file(open_path(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0) refuse_to_open(path, std::strerror(errno));
  if (!S_ISREG(status.st_mode)) refuse_to_open(path, "not a regular file");
  return file;
}

std::size_t read_some(int descriptor, char* buffer, std::size_t size_bytes, const std::string& file_name) {
  for (;;) {
    const ssize_t count = ::read(descriptor, buffer, size_bytes);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) {
      throw CommandError(kExitCannotRun, "cannot read '" + file_name + "': " + std::strerror(errno));
    }
  }
}

std::string read_to_end(const FileDescriptor& file, const std::string& file_name) {
  std::string bytes;
  for (;;) {
    const std::size_t held = bytes.size();
    bytes.resize(held + kReadBytes);
    const std::size_t count = read_some(file.get(), bytes.data() + held, kReadBytes, file_name);
    bytes.resize(held + count);
    if (count == 0) return bytes;
  }
}

std::string read_file(const std::string& path) { return read_to_end(open_input(path), path); }

void refuse_to_write(const std::string& path, int error) {
  throw CommandError(kExitCannotRun, "cannot write '" + path + "': " + std::strerror(error));
}

int write_all(int descriptor, const char* bytes, std::size_t size_bytes) noexcept {
  while (size_bytes > 0) {
    const ssize_t count = ::write(descriptor, bytes, size_bytes);
    if (count < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    if (count == 0) return EIO;  // it would go on like this
    bytes += count;
    size_bytes -= static_cast<std::size_t>(count);
  }
  return 0;
}

}  // namespace qzlog_tool
