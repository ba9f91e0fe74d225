#include "foundation/memory_block.h"

#include <cstring>
#include <new>

#if QZLOG_HAS_ADDRESS_SANITIZER

// What the sanitizer puts around it is of more use than what stands there otherwise.
void* qz_make_block(std::size_t size_bytes, bool /*apart*/) noexcept {
  return ::operator new(size_bytes, std::nothrow);
}
void qz_destroy_block(void* block) noexcept { ::operator delete(block); }

#else

namespace {

// Before each block stands where its memory begins.
constexpr std::size_t kBefore = alignof(std::max_align_t);
static_assert(kBefore >= sizeof(void*) && kBefore < qz_kCacheLine);

constexpr std::size_t whole_lines(std::size_t size_bytes) {
  return (size_bytes + qz_kCacheLine - 1) / qz_kCacheLine * qz_kCacheLine;
}

/// How far behind an address the next line begins.
std::size_t distance_to_line(const char* address) {
  return (0 - reinterpret_cast<std::uintptr_t>(address)) % qz_kCacheLine;
}

}  // namespace

void* qz_make_block(std::size_t size_bytes, bool apart) noexcept {
  const std::size_t size = apart ? kBefore + qz_kCacheLine + whole_lines(size_bytes) : 2 * kBefore + size_bytes;
  void* const memory = ::operator new(size, std::nothrow);
  if (memory == nullptr) return nullptr;
  char* block = static_cast<char*>(memory) + kBefore;
  if (apart) {
    block += distance_to_line(block);
  } else if (qz_is_apart(block)) {
    block += kBefore;
  }
  std::memcpy(block - sizeof memory, &memory, sizeof memory);
  return block;
}

void qz_destroy_block(void* block) noexcept {
  void* memory = nullptr;
  std::memcpy(&memory, static_cast<char*>(block) - sizeof memory, sizeof memory);
  ::operator delete(memory);
}

#endif
