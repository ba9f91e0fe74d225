#include "tests/support/malloc_failure.h"

#include <cerrno>
#include <cstddef>

namespace {

struct Countdown {
  unsigned until_failure = 0;  // 0: none is due
  bool keeps_failing = false;
  bool happened = false;
};
constinit thread_local Countdown countdown;

[[maybe_unused]] bool next_fails() {
  if (countdown.until_failure == 0) return false;
  if (countdown.until_failure > 1) {
    --countdown.until_failure;
    return false;
  }
  if (!countdown.keeps_failing) countdown.until_failure = 0;
  countdown.happened = true;
  errno = ENOMEM;
  return true;
}

}  // namespace

namespace qz_test {

MallocFailure::MallocFailure(unsigned nth, Reach reach) { countdown = {nth, reach == kFromThenOn, false}; }
MallocFailure::~MallocFailure() { countdown.until_failure = 0; }
bool MallocFailure::happened() { return countdown.happened; }

}  // namespace qz_test

#ifndef QZLOG_SANITIZED

// Found before the C library's by every module of the process. What they return is the C library's, for its own free().
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept {
  return next_fails() ? nullptr : __libc_malloc(size);
}
__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept {
  return next_fails() ? nullptr : __libc_calloc(count, size);
}
__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) noexcept {
  return next_fails() ? nullptr : __libc_realloc(memory, size);
}
}

#endif
