#ifndef QZLOG_FOUNDATION_THREAD_INSTANCE_H
#define QZLOG_FOUNDATION_THREAD_INSTANCE_H

#include <new>

#include "qzlog/qz_exception.h"

/// Calls `use` with the calling thread's own T, made on first use and destroyed when the thread ends. Code that still
/// runs after that (destructors of static objects) gets one of its own for the call. std::bad_alloc becomes
/// QZX_memory_alloc.
template <typename T, typename Use>
decltype(auto) with_thread_instance(Use&& use) {
  static thread_local bool destroyed = false;
  struct Holder {
    T instance;
    ~Holder() { destroyed = true; }
  };
  try {
    if (destroyed) {
      T temporary;
      return use(temporary);
    }
    static thread_local Holder holder;
    return use(holder.instance);
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
}

#endif  // QZLOG_FOUNDATION_THREAD_INSTANCE_H
