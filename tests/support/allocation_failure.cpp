#include "tests/support/allocation_failure.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

struct Countdown {
  unsigned until_failure = 0;  // 0: nothing fails
  bool keeps_failing = false;
  bool happened = false;
};
thread_local Countdown countdown;

constinit std::atomic<bool> is_out = false;

bool next_fails() {
  if (is_out.load(std::memory_order_relaxed)) return true;
  if (countdown.until_failure == 0) return false;
  if (countdown.until_failure > 1) {
    --countdown.until_failure;
    return false;
  }
  if (!countdown.keeps_failing) countdown.until_failure = 0;
  countdown.happened = true;
  return true;
}

void* allocate(std::size_t size) { return next_fails() ? nullptr : std::malloc(size == 0 ? 1 : size); }

void* allocate_aligned(std::size_t size, std::align_val_t alignment) {
  const auto boundary = static_cast<std::size_t>(alignment);
  return next_fails() ? nullptr : std::aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary);
}

void* or_throw(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

namespace qz_test {

AllocationFailure::AllocationFailure(unsigned nth, Reach reach) { countdown = {nth, reach == kFromThenOn, false}; }
AllocationFailure::~AllocationFailure() { countdown = {}; }
bool AllocationFailure::happened() const { return countdown.happened; }

MemoryOutage::MemoryOutage() { is_out = true; }
MemoryOutage::~MemoryOutage() { is_out = false; }

}  // namespace qz_test

void* operator new(std::size_t size) { return or_throw(allocate(size)); }
void* operator new[](std::size_t size) { return or_throw(allocate(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return or_throw(allocate_aligned(size, alignment)); }
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return or_throw(allocate_aligned(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate_aligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate_aligned(size, alignment);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

// Found before the C library's in every module of the process, as the replaced operators are.
extern "C" __attribute__((visibility("default"))) char* strdup(const char* text) noexcept {
  const std::size_t size = std::strlen(text) + 1;
  void* copy = allocate(size);
  return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}
