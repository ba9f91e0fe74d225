#include "tools/system/memory_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

constexpr const char* kName = "a file in memory";

[[noreturn]] void fail(const std::string& what, int error) {
  throw CommandError(kExitCannotRun, what + ": " + std::strerror(error));
}

FileDescriptor make_file() {
  const int descriptor = ::memfd_create("qzlog", MFD_CLOEXEC);
  if (descriptor < 0) fail(std::string("cannot make ") + kName, errno);
  return FileDescriptor(descriptor);
}

void go_to_beginning(const FileDescriptor& file) {
  if (::lseek(file.get(), 0, SEEK_SET) != 0) fail(std::string("cannot use ") + kName, errno);
}

}  // namespace

MemoryFile::MemoryFile(std::string_view bytes) : file_(make_file()) { overwrite_beginning(bytes); }

std::string MemoryFile::path() const {
  std::string path = "/proc/self/fd/" + std::to_string(file_.get());
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) fail("cannot use " + path + ", for which /proc has to be mounted", errno);
  return path;
}

std::string MemoryFile::content() const {
  go_to_beginning(file_);
  return read_to_end(file_, kName);
}

void MemoryFile::overwrite_beginning(std::string_view bytes) {
  go_to_beginning(file_);
  const int failure = write_all(file_.get(), bytes.data(), bytes.size());
  if (failure != 0) fail(std::string("cannot write ") + kName, failure);
}

}  // namespace qzlog_tool
