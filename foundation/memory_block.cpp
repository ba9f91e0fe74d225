#include "foundation/memory_block.h"

#include <cstring>
#include <new>

namespace qzlog {

#if QZLOG_HAS_ADDRESS_SANITIZER

// What the sanitizer puts around it is of more use than what stands there otherwise.
void* make_block(std::size_t size_bytes, bool /*apart*/) noexcept { return ::operator new(size_bytes, std::nothrow); }
void destroy_block(void* block) noexcept { ::operator delete(block); }

#else

namespace {

// Before each block stands where its memory begins.
constexpr std::size_t kBefore = alignof(std::max_align_t);
static_assert(kBefore >= sizeof(void*) && kBefore < kCacheLine);

constexpr std::size_t whole_lines(std::size_t size_bytes) {
  return (size_bytes + kCacheLine - 1) / kCacheLine * kCacheLine;
}

/// How far behind an address the next line begins.
std::size_t distance_to_line(const char* address) {
  return (0 - reinterpret_cast<std::uintptr_t>(address)) % kCacheLine;
}

}  // namespace

void* make_block(std::size_t size_bytes, bool apart) noexcept {
  const std::size_t size = apart ? kBefore + kCacheLine + whole_lines(size_bytes) : 2 * kBefore + size_bytes;
  void* const memory = ::operator new(size, std::nothrow);
  if (memory == nullptr) return nullptr;
  char* block = static_cast<char*>(memory) + kBefore;
  if (apart) {
    block += distance_to_line(block);
  } else if (is_apart(block)) {
    block += kBefore;
  }
  std::memcpy(block - sizeof memory, &memory, sizeof memory);
  return block;
}

void destroy_block(void* block) noexcept {
  void* memory = nullptr;
  std::memcpy(&memory, static_cast<char*>(block) - sizeof memory, sizeof memory);
  ::operator delete(memory);
}

#endif

}  // namespace qzlog
