#ifndef QZLOG_FOUNDATION_ALLOCATE_H
#define QZLOG_FOUNDATION_ALLOCATE_H

#include <cstddef>
#include <new>
#include <utility>

#include "qzlog/qz_exception.h"

namespace qzlog {

/// Allocations that report exhausted memory the library's way: by throwing QZX_memory_alloc without a text.

template <typename T, typename... Arguments>
T* new_object(Arguments&&... arguments) {
  T* object = new (std::nothrow) T(std::forward<Arguments>(arguments)...);
  if (object == nullptr) throw QZX_memory_alloc();
  return object;
}

/// `count` default-initialised elements, to be released with the array delete.
template <typename T>
T* new_array(std::size_t count) {
  T* elements = new (std::nothrow) T[count];
  if (elements == nullptr) throw QZX_memory_alloc();
  return elements;
}

/// About what a block of so many bytes takes of the heap: they are rounded up, and have a head. 0 for none.
constexpr std::size_t block_bytes(std::size_t size) noexcept {
  constexpr std::size_t kUnit = 2 * sizeof(void*);
  return size == 0 ? 0 : (size + sizeof(void*) + kUnit - 1) / kUnit * kUnit;
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_ALLOCATE_H
