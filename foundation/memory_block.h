#ifndef QZLOG_FOUNDATION_MEMORY_BLOCK_H
#define QZLOG_FOUNDATION_MEMORY_BLOCK_H

#include <cstddef>
#include <cstdint>

#include "foundation/cache_line.h"

// Under the address sanitizer every object has memory of its own, so that its use after its end is seen.
#if defined(__SANITIZE_ADDRESS__)
#define QZLOG_HAS_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#define QZLOG_HAS_ADDRESS_SANITIZER __has_feature(address_sanitizer)
#else
#define QZLOG_HAS_ADDRESS_SANITIZER 0
#endif

namespace qzlog {

/// Memory for an object, aligned for any that is not over-aligned; null without. One that stands apart has its cache
/// lines for itself; the others are smaller.
void* make_block(std::size_t size_bytes, bool apart) noexcept;
/// Of make_block, not null.
void destroy_block(void* block) noexcept;

/// Whether a block of make_block stands apart. Such a block begins with a line, the others never do; under the
/// address sanitizer there is no difference, and none counts as one.
inline bool is_apart(const void* block) noexcept {
  return !QZLOG_HAS_ADDRESS_SANITIZER && reinterpret_cast<std::uintptr_t>(block) % kCacheLine == 0;
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_MEMORY_BLOCK_H
