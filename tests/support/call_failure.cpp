#include "tests/support/call_failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>

#include "tests/support/open_call.h"

namespace qz_test {

namespace {

// What each call fails with; 0 for none.
std::atomic<int> g_errors[3];

struct Shortening {
  bool on = false;
  int whole = 0;
  int in_part = 0;
  int error = 0;
};
Shortening g_shortening;

bool fails(FileCall call) {
  const int error = g_errors[static_cast<int>(call)];
  if (error != 0) errno = error;
  return error != 0;
}

// How much of a transfer takes place; -1 when it fails.
ssize_t part_of(std::size_t size) {
  const auto whole = static_cast<ssize_t>(size);
  if (!g_shortening.on || (g_shortening.whole > 0 && g_shortening.whole-- > 0)) return whole;
  if (g_shortening.in_part == 0) {
    errno = g_shortening.error;
    return g_shortening.error != 0 ? -1 : whole;
  }
  if (g_shortening.in_part > 0) --g_shortening.in_part;
  return whole < 2 ? whole : whole / 2;
}

}  // namespace

CallFailure::CallFailure(FileCall call, int error) { g_errors[static_cast<int>(call)] = error; }

CallFailure::~CallFailure() {
  for (std::atomic<int>& error : g_errors) error = 0;
}

ShortTransfers::ShortTransfers(int whole, int in_part, int error) { g_shortening = {true, whole, in_part, error}; }

ShortTransfers::~ShortTransfers() { g_shortening = {}; }

}  // namespace qz_test

using qz_test::FileCall;

// In place of the C library's, which is asked by way of others of its functions.
extern "C" {

int open(const char* path, int flags, ...) {
  if (qz_test::fails(FileCall::kOpen)) return -1;
  va_list arguments;
  va_start(arguments, flags);
  const int descriptor = qz_test::hand_on_open(path, flags, arguments);
  va_end(arguments);
  return descriptor;
}

int fstat(int descriptor, struct stat* status) noexcept {
  return qz_test::fails(FileCall::kStatus) ? -1 : fstatat(descriptor, "", status, AT_EMPTY_PATH);
}

ssize_t pread(int descriptor, void* target, std::size_t size, off_t position) {
  if (qz_test::fails(FileCall::kRead)) return -1;
  const ssize_t part = qz_test::part_of(size);
  const iovec place = {target, static_cast<std::size_t>(part)};
  return part < 0 ? -1 : preadv(descriptor, &place, 1, position);
}

ssize_t pwrite(int descriptor, const void* source, std::size_t size, off_t position) {
  const ssize_t part = qz_test::part_of(size);
  const iovec place = {const_cast<void*>(source), static_cast<std::size_t>(part)};
  return part < 0 ? -1 : pwritev(descriptor, &place, 1, position);
}

}  // extern "C"
