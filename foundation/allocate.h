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

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_ALLOCATE_H
