#include "tests/sinks/file_call_failure.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>

#include "tests/support/open_call.h"

namespace qz_test {

namespace {

struct Plan {
  std::atomic<bool> on{false};
  FileCallKind kind = FileCallKind::kCount;
  int nth = 0;
  int error = 0;
  int times = 0;
  bool writes_half = false;
  std::size_t part = 0;
  bool cut_fails = false;
  std::atomic<int> calls{0};
  std::atomic<bool> happened{false};
};
Plan g_plan;

/// Which failure this call is: 0 for none, 1 for the first.
int failure_of(FileCallKind kind) {
  if (!g_plan.on || g_plan.kind != kind) return 0;
  const int call = ++g_plan.calls;
  if (call < g_plan.nth || call - g_plan.nth >= g_plan.times) return 0;
  g_plan.happened = true;
  if (g_plan.error == FileCallFailure::kKilled && kind != FileCallKind::kWrite) kill(getpid(), SIGKILL);
  return call - g_plan.nth + 1;
}

struct Synced {
  std::atomic<bool> on{false};
  std::mutex mutex;
  std::map<ino_t, off_t> bytes;
};
Synced g_synced;

void note_sync(int descriptor) {
  struct stat status = {};
  if (!g_synced.on || fstat(descriptor, &status) != 0) return;
  const std::lock_guard hold(g_synced.mutex);
  off_t& bytes = g_synced.bytes[status.st_ino];
  bytes = std::max(bytes, status.st_size);
}

bool fails(FileCallKind kind) {
  if (failure_of(kind) == 0) return false;
  errno = g_plan.error;
  return true;
}

/// The C library's own function, which has another name where its offsets are wider than a word.
template <typename Function>
Function next_of(const char* name) {
  const std::string wide = std::string(name) + "64";
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, sizeof(long) < sizeof(off_t) ? wide.c_str() : name));
}

}  // namespace

FileCallFailure::FileCallFailure(FileCallKind kind, int nth, int error, int times, bool writes_half) {
  g_plan.kind = kind;
  g_plan.nth = nth;
  g_plan.error = error;
  g_plan.times = times;
  g_plan.writes_half = writes_half;
  g_plan.calls = 0;
  g_plan.happened = false;
  g_plan.on = true;
}

FileCallFailure::~FileCallFailure() { g_plan.on = false; }

void FileCallFailure::set_part(std::size_t bytes) { g_plan.part = bytes; }

void FileCallFailure::set_cut_fails(bool fails) { g_plan.cut_fails = fails; }

bool FileCallFailure::happened() const { return g_plan.happened; }

SyncNotes::SyncNotes() { g_synced.on = true; }
SyncNotes::~SyncNotes() {
  g_synced.on = false;
  g_synced.bytes.clear();
}

off_t SyncNotes::synced_bytes(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return 0;
  const std::lock_guard hold(g_synced.mutex);
  const auto found = g_synced.bytes.find(status.st_ino);
  return found == g_synced.bytes.end() ? 0 : found->second;
}

}  // namespace qz_test

using qz_test::FileCallKind;

// In place of the C library's.
extern "C" {

int open(const char* path, int flags, ...) {
  if (qz_test::fails(FileCallKind::kOpen)) return -1;
  va_list arguments;
  va_start(arguments, flags);
  const int descriptor = qz_test::hand_on_open(path, flags, arguments);
  va_end(arguments);
  return descriptor;
}

ssize_t write(int descriptor, const void* source, std::size_t size) {
  const int failure = qz_test::failure_of(FileCallKind::kWrite);
  if (failure != 0 && qz_test::g_plan.error == qz_test::FileCallFailure::kKilled) {
    const iovec part = {const_cast<void*>(source), std::min(size, qz_test::g_plan.part)};
    writev(descriptor, &part, 1);
    kill(getpid(), SIGKILL);
  }
  const bool in_part = failure == 1 && qz_test::g_plan.writes_half && size > 1;
  if (failure != 0 && !in_part) {
    errno = qz_test::g_plan.error;
    return -1;
  }
  const iovec place = {const_cast<void*>(source), in_part ? size / 2 : size};
  return writev(descriptor, &place, 1);
}

// Nothing is brought to a disk: that takes milliseconds.
int fdatasync(int descriptor) {
  if (qz_test::fails(FileCallKind::kSync)) return -1;
  qz_test::note_sync(descriptor);
  return 0;
}

int ftruncate(int descriptor, off_t size) noexcept {
  if (qz_test::g_plan.cut_fails) errno = EPERM;
  return qz_test::g_plan.cut_fails || qz_test::fails(FileCallKind::kCut)
             ? -1
             : qz_test::next_of<decltype(&ftruncate)>("ftruncate")(descriptor, size);
}

int unlink(const char* path) noexcept {
  return qz_test::fails(FileCallKind::kUnlink) ? -1 : unlinkat(AT_FDCWD, path, 0);
}

int close(int descriptor) {
  const int result = static_cast<int>(syscall(SYS_close, descriptor));
  return qz_test::fails(FileCallKind::kClose) ? -1 : result;
}

void* mmap(void* address, std::size_t size, int protection, int flags, int descriptor, off_t offset) noexcept {
  if (descriptor >= 0 && qz_test::fails(FileCallKind::kMap)) return MAP_FAILED;
  const auto next = qz_test::next_of<decltype(&mmap)>("mmap");
  return next(address, size, protection, flags, descriptor, offset);
}

int posix_fallocate(int descriptor, off_t offset, off_t size) {
  if (qz_test::fails(FileCallKind::kRoom)) return qz_test::g_plan.error;
  return fallocate(descriptor, 0, offset, size) == 0 ? 0 : errno;
}

}  // extern "C"
