#include "bench/allocations.h"

#include <malloc.h>

#include <cerrno>
#include <cstddef>

#define QZLOG_BENCH_REPLACES_LIBC extern "C" __attribute__((visibility("default")))

// The C library's own allocator, which the functions below call.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace qzlog_bench {
namespace {

struct Counters {
  long allocations;
  bool bytes_are_counted;
  long bytes;
};

constinit thread_local Counters counters = {};

void* got(void* block) {
  ++counters.allocations;
  if (counters.bytes_are_counted) [[unlikely]]
    counters.bytes += static_cast<long>(malloc_usable_size(block));
  return block;
}

void give_back(void* block) {
  if (counters.bytes_are_counted) [[unlikely]]
    counters.bytes -= static_cast<long>(malloc_usable_size(block));
}

}  // namespace

long allocation_count() { return counters.allocations; }

HeapUse::HeapUse() { counters = {.allocations = counters.allocations, .bytes_are_counted = true, .bytes = 0}; }
HeapUse::~HeapUse() { counters.bytes_are_counted = false; }
long HeapUse::bytes() const { return counters.bytes; }

}  // namespace qzlog_bench

using qzlog_bench::give_back;
using qzlog_bench::got;

QZLOG_BENCH_REPLACES_LIBC void* malloc(std::size_t size) { return got(__libc_malloc(size)); }
QZLOG_BENCH_REPLACES_LIBC void* calloc(std::size_t count, std::size_t size) { return got(__libc_calloc(count, size)); }
QZLOG_BENCH_REPLACES_LIBC void* realloc(void* block, std::size_t size) {
  give_back(block);
  return got(__libc_realloc(block, size));
}
QZLOG_BENCH_REPLACES_LIBC void* memalign(std::size_t alignment, std::size_t size) {
  return got(__libc_memalign(alignment, size));
}
QZLOG_BENCH_REPLACES_LIBC void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return got(__libc_memalign(alignment, size));
}
QZLOG_BENCH_REPLACES_LIBC int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = got(__libc_memalign(alignment, size));
  return *block != nullptr ? 0 : ENOMEM;
}
QZLOG_BENCH_REPLACES_LIBC void free(void* block) {
  give_back(block);
  __libc_free(block);
}
