#include "message/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <iterator>

namespace qzlog {

namespace {

constexpr std::size_t kLargest = std::size_t{1} << 30U;  // a bundle's offsets do not reach farther

int open_to_read(const char* path, int flags) {
  int descriptor = -1;
  do {
    descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | flags);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

class OpenedFile {
 public:
  /// Without waiting: what a name stands for may be a pipe. Only a leased file heeds that too: its lease has to be
  /// waited for.
  explicit OpenedFile(const char* path) : descriptor_(open_to_read(path, O_NONBLOCK)) {
    if (descriptor_ < 0 && errno == EWOULDBLOCK) descriptor_ = open_to_read(path, 0);
  }
  ~OpenedFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

/// Errors that say of a name that no file can be opened by it. Any other says that this did not work, not that there
/// is none.
bool is_no_file(int error) {
  constexpr int kErrors[] = {ENOENT, ENOTDIR, ELOOP, ENAMETOOLONG, EACCES, EPERM, ENXIO, ENODEV, EINVAL};
  return std::find(std::begin(kErrors), std::end(kErrors), error) != std::end(kErrors);
}

bool read_all(int descriptor, std::string& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = read(descriptor, bytes.data() + done, bytes.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

WholeFile read_whole_file(const std::string& path) {
  using State = WholeFile::State;
  const OpenedFile file(path.c_str());
  if (file.descriptor() < 0) return {is_no_file(errno) ? State::kAbsent : State::kFailed, {}};
  struct stat status = {};
  if (fstat(file.descriptor(), &status) != 0) return {State::kFailed, {}};
  if (!S_ISREG(status.st_mode)) return {State::kAbsent, {}};
  if (static_cast<unsigned long long>(status.st_size) > kLargest) return {State::kFailed, {}};
  WholeFile whole;
  whole.bytes.resize(static_cast<std::size_t>(status.st_size));
  whole.state = read_all(file.descriptor(), whole.bytes) ? State::kRead : State::kFailed;
  return whole;
}

}  // namespace qzlog
