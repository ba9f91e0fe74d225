#include "tools/system/standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>

#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

/// A file system may say only when a file is closed that it could not keep what was written; closing a copy asks it.
/// What is no file that can be copied has said so before.
bool is_kept() {
  const int copy = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  return copy < 0 || ::close(copy) == 0 || errno == EINTR;
}

}  // namespace

// What was too much to be held was written, or not, before now; errno then still tells why.
void flush_standard_output() {
  const int earlier_error = std::cout.good() ? 0 : errno;
  const bool complete = std::cout.good();
  std::cout.clear();
  errno = 0;
  if (std::cout.flush() && is_kept() && complete) return;
  const int error = errno != 0 ? errno : earlier_error;
  std::cout.setstate(std::ios::badbit);
  if (error == EPIPE) throw CommandError(kExitReaderGone, "");
  throw CommandError(kExitCannotRun, std::string("cannot write to standard output") +
                                         (error != 0 ? std::string(": ") + std::strerror(error) : ""));
}

}  // namespace qzlog_tool
