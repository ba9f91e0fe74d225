#include "ship/file/group_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "ship/file/lock_wait.h"
#include "ship/plugin/descriptor.h"
#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

constexpr mode_t kPermissions = 0640;
constexpr unsigned kMostReaders = 10'000;
constexpr std::size_t kMostBytes = std::size_t{8} << 20;

[[noreturn]] void fail_on(const char* what, const std::string& path) {
  fail_for_now(std::string("cannot ") + what + " '" + path + "': " + std::strerror(errno));
}

struct flock byte_lock(short type, unsigned byte) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(byte);
  lock.l_len = 1;
  return lock;
}

/// Of the byte 0, for changes.
class ChangeLock {
 public:
  ChangeLock(int descriptor, const std::string& path) : descriptor_(descriptor) {
    struct flock lock = byte_lock(F_WRLCK, 0);
    wait_for_lock(path, [descriptor, &lock] { return ::fcntl(descriptor, F_OFD_SETLK, &lock); });
  }
  ~ChangeLock() {
    struct flock lock = byte_lock(F_UNLCK, 0);
    ::fcntl(descriptor_, F_OFD_SETLK, &lock);
  }
  ChangeLock(const ChangeLock&) = delete;
  ChangeLock& operator=(const ChangeLock&) = delete;

 private:
  int descriptor_;
};

bool write_all(int descriptor, const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t count = ::write(descriptor, text.data() + at, text.size() - at);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) at += static_cast<std::size_t>(count);
  }
  return ::fdatasync(descriptor) == 0 || errno == EINVAL;
}

}  // namespace

GroupFile::GroupFile(const std::string& records, const std::string& group, const std::function<GroupState()>& begin)
    : path_(records + ".group-" + group) {
  const std::string lock = path_ + ".lock";
  locks_ = ::open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kPermissions);
  if (locks_ < 0) fail_on("open", lock);
  try {
    become_reader(begin);
  } catch (...) {
    ::close(locks_);
    throw;
  }
}

GroupFile::~GroupFile() { ::close(locks_); }

// What a former reader of the same number had is nobody's.
void GroupFile::become_reader(const std::function<GroupState()>& begin) {
  const ChangeLock lock(locks_, path_ + ".lock");
  take_number();
  std::optional<GroupState> state = read();
  if (!state) state = begin();
  for (GroupClaim& claim : state->claims) {
    if (claim.reader == reader_) claim.reader = 0;
  }
  write(*state);
}

void GroupFile::take_number() {
  for (unsigned number = 1; reader_ == 0; ++number) {
    struct flock lock = byte_lock(F_WRLCK, number);
    if (::fcntl(locks_, F_OFD_SETLK, &lock) == 0) reader_ = number;
    if (reader_ == 0 && number == kMostReaders) fail_on("lock", path_ + ".lock");
  }
}

bool GroupFile::is_there(unsigned reader) const {
  if (reader == 0 || reader > kMostReaders) return false;
  if (reader == reader_) return true;
  struct flock lock = byte_lock(F_WRLCK, reader);
  if (::fcntl(locks_, F_OFD_GETLK, &lock) != 0) fail_on("lock", path_ + ".lock");  // it may well be there
  return lock.l_type != F_UNLCK;
}

void GroupFile::change(const std::function<void(GroupState& state)>& change) {
  const ChangeLock lock(locks_, path_ + ".lock");
  const std::optional<GroupState> before = read();
  if (!before) fail_for_good("what the group has read, '" + path_ + "', was removed while it was used: start again");
  GroupState state = *before;
  change(state);
  if (state != *before) write(state);
}

std::optional<GroupState> GroupFile::read() const {
  const Descriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (file.get() < 0) {
    if (errno == ENOENT) return std::nullopt;
    fail_on("read", path_);
  }
  std::string text;
  char block[4096];
  while (text.size() <= kMostBytes) {
    const ssize_t count = ::read(file.get(), block, sizeof block);
    if (count < 0 && errno != EINTR) fail_on("read", path_);
    if (count == 0) break;
    if (count > 0) text.append(block, static_cast<std::size_t>(count));
  }
  std::optional<GroupState> state = GroupState::parse(text);
  if (!state)
    fail_for_good("what the group has read, '" + path_ + "', is damaged: remove it, and the group begins anew");
  return state;
}

void GroupFile::write(const GroupState& state) const {
  const std::string written = path_ + ".new";
  const std::string text = state.text();  // without memory for it no file is begun
  Descriptor file(::open(written.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, kPermissions));
  if (file.get() >= 0 && write_all(file.get(), text) && ::rename(written.c_str(), path_.c_str()) == 0) {
    return;
  }
  const int error = errno;
  ::unlink(written.c_str());
  errno = error;
  fail_on("write", path_);
}

}  // namespace qzlog_ship
