#include "tests/faults/memory_faults.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>

// glibc's own, which is what the names below would otherwise be. Its calls inside the C library reach the ones below
// too.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace qz_fault {

namespace {

MemoryFault g_fault{};
MemoryCount* g_count = nullptr;
bool g_all_threads = false;
// Reached without an allocation even in a thread that has none of its thread-local data yet.
__thread bool t_here __attribute__((tls_model("initial-exec"))) = false;

bool fails_now() {
  if (!g_all_threads && !t_here) return false;
  const long number = __atomic_add_fetch(&g_count->allocations, 1, __ATOMIC_RELAXED);
  if (g_fault.nth == 0 || number < g_fault.nth || (number > g_fault.nth && !g_fault.from_then_on)) return false;
  __atomic_add_fetch(&g_count->failed, 1, __ATOMIC_RELAXED);
  errno = ENOMEM;
  return true;
}

bool is_power_of_two(std::size_t number) { return number != 0 && (number & (number - 1)) == 0; }

}  // namespace

void set_memory_fault(const MemoryFault& fault, MemoryCount* count) {
  g_fault = fault;
  g_count = count;
}

void count_all_allocations() { g_all_threads = g_count != nullptr; }
void count_allocations_here(bool on) { t_here = on && g_count != nullptr; }

}  // namespace qz_fault

using qz_fault::fails_now;

#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size) { return fails_now() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) { return fails_now() ? nullptr : __libc_calloc(count, size); }
void* realloc(void* block, std::size_t size) { return fails_now() ? nullptr : __libc_realloc(block, size); }

void* reallocarray(void* block, std::size_t count, std::size_t size) {
  std::size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes)) {
    errno = ENOMEM;
    return nullptr;
  }
  return realloc(block, bytes);
}

void* memalign(std::size_t alignment, std::size_t size) {
  return fails_now() ? nullptr : __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  if (!qz_fault::is_power_of_two(alignment) || alignment % sizeof(void*) != 0) return EINVAL;
  const int errno_before = errno;
  void* const made = memalign(alignment, size);
  errno = errno_before;
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}
}
#pragma GCC visibility pop
