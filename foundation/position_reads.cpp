#include "foundation/position_reads.h"

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>

namespace qzlog {

std::size_t read_up_to(int descriptor, std::uint64_t offset, char* target, std::size_t size) noexcept {
  std::size_t done = 0;
  while (done != size) {
    const ssize_t count = pread(descriptor, target + done, size - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

}  // namespace qzlog
