#ifndef QZLOG_FOUNDATION_PREFETCH_H
#define QZLOG_FOUNDATION_PREFETCH_H

#include <algorithm>
#include <cstddef>

#include "foundation/cache_line.h"

namespace qzlog {

/// Processors wait for some of what they were asked for before they take more.
constexpr std::size_t kMostPrefetched = 10 * kCacheLine;

/// Asks the processor for the beginning of what stands there, which is to be read soon: reads of several places then do
/// not wait one for the other. Any address will do.
inline void prefetch(const void* address, std::size_t bytes) {
  if (address == nullptr) return;
  const char* const begin = static_cast<const char*>(address);
  for (std::size_t at = 0; at < std::min(bytes, kMostPrefetched); at += kCacheLine) __builtin_prefetch(begin + at);
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_PREFETCH_H
