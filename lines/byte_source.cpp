#include "lines/byte_source.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "lines/utf8_text.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

/// Until there is something to read, or a failure to be found by reading. False, with errno, when waiting fails.
bool wait_for_bytes(int descriptor) {
  pollfd waited = {descriptor, POLLIN, 0};
  return ::poll(&waited, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

DescriptorSource::DescriptorSource(const char* path) : name_(path), descriptor_(-1), is_own_(true) {
  do {
    descriptor_ = ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY);
  } while (descriptor_ < 0 && errno == EINTR);
  if (descriptor_ < 0) fail("open", errno);
}

DescriptorSource::~DescriptorSource() {
  if (is_own_) ::close(descriptor_);
}

std::size_t DescriptorSource::Read(char* buffer, std::size_t size) {
  for (;;) {
    const ssize_t count = ::read(descriptor_, buffer, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    const bool is_empty = errno == EAGAIN || errno == EWOULDBLOCK;
    if (is_empty ? !wait_for_bytes(descriptor_) : errno != EINTR) fail("read", errno);
  }
}

void DescriptorSource::fail(const char* what, int error) const {
  char room[128];
  const char* const reason = strerror_r(error, room, sizeof room);
  const std::string text = std::string("cannot ") + what + " '" + printable(name_) + "': " + reason;
  throw QZX_logging_file_operation_failed(text.c_str());
}

}  // namespace qzlog
