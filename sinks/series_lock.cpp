#include "sinks/series_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "foundation/fork_gate.h"

namespace qzlog {

namespace {

constexpr std::size_t kPageSize = 4096;
static_assert(sizeof(SeriesLock::Page) <= kPageSize);

/// With the size of the mutex, which 32-bit processes lay out in another way, and the order of bytes.
void write_magic(char (&magic)[16]) {
  const std::uint32_t words[4] = {0x514c5a51, 1, sizeof(pthread_mutex_t), sizeof(void*)};
  std::memcpy(magic, words, sizeof magic);
}

bool has_magic(const SeriesLock::Page& page) {
  char expected[16];
  write_magic(expected);
  return std::memcmp(page.magic, expected, sizeof expected) == 0;
}

bool initialise(SeriesLock::Page& page) {
  std::memset(&page, 0, sizeof page);
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return false;
  const bool made = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                    pthread_mutex_init(&page.mutex, &attributes) == 0;
  pthread_mutexattr_destroy(&attributes);
  if (made) write_magic(page.magic);
  return made;
}

/// Another process holds the file exclusively only while it makes the page.
bool share(int file) {
  constexpr std::timespec kNap = {0, 1'000'000};
  for (int attempt = 0; attempt < 1000; ++attempt) {
    if (flock(file, LOCK_SH | LOCK_NB) == 0) return true;
    if (errno != EWOULDBLOCK && errno != EINTR) return false;
    nanosleep(&kNap, nullptr);
  }
  return false;
}

bool still_has_name(int file, const std::string& path) {
  struct stat own = {};
  struct stat named = {};
  return fstat(file, &own) == 0 && stat(path.c_str(), &named) == 0 && own.st_dev == named.st_dev &&
         own.st_ino == named.st_ino;
}

}  // namespace

bool SeriesLock::open(const std::string& path, mode_t permissions) {
  const ForkDelay fork_delay;
  for (int attempt = 0; attempt < 10; ++attempt) {
    if (!open_file(path, permissions)) return false;
    if (!enter()) break;
    if (still_has_name(file_.get(), path)) return true;
    close();
  }
  close();
  return false;
}

bool SeriesLock::open_file(const std::string& path, mode_t permissions) {
  file_.reset(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, permissions));
  struct stat status = {};
  return file_ && fstat(file_.get(), &status) == 0 && S_ISREG(status.st_mode) &&
         posix_fallocate(file_.get(), 0, kPageSize) == 0;
}

/// Whoever finds the file unused makes the page anew: what it held belonged to processes that are gone.
bool SeriesLock::enter() {
  if (flock(file_.get(), LOCK_EX | LOCK_NB) == 0) {
    return map() && initialise(*page_) && share(file_.get());
  }
  return share(file_.get()) && map() && has_magic(*page_);
}

bool SeriesLock::map() {
  void* const page = mmap(nullptr, kPageSize, PROT_READ | PROT_WRITE, MAP_SHARED, file_.get(), 0);
  if (page == MAP_FAILED) return false;
  page_ = static_cast<Page*>(page);
  return true;
}

void SeriesLock::close() {
  if (page_ != nullptr) munmap(page_, kPageSize);
  page_ = nullptr;
  file_.reset();
}

SeriesLock::State SeriesLock::wait_for_lock(int error) noexcept {
  // In slices, so that a clock that is set back does not make one long.
  for (int slice = 0; slice < 20 && (error == EBUSY || error == ETIMEDOUT); ++slice) {
    std::timespec until = {};
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_nsec += 50'000'000;
    if (until.tv_nsec >= 1'000'000'000) ++until.tv_sec, until.tv_nsec -= 1'000'000'000;
    error = pthread_mutex_timedlock(&page_->mutex, &until);
  }
  if (error == EOWNERDEAD) {
    pthread_mutex_consistent(&page_->mutex);
    return State::kAfterDeath;
  }
  return error == 0 ? State::kHeld : State::kNotHeld;
}

}  // namespace qzlog
