#ifndef QZLOG_FOUNDATION_THREAD_INSTANCE_H
#define QZLOG_FOUNDATION_THREAD_INSTANCE_H

#include <new>

#include "qzlog/qz_exception.h"

/// The calling thread's own T: made on first use, destroyed when the thread ends. Only a pointer is thread-local, so
/// that reaching it costs a load and the library stays within what a process has room for when it loads one at run
/// time.
template <typename T>
class qz_ThreadInstance {
 public:
  /// Null before the first use and after the thread's end.
  static T* find() noexcept { return instance_; }
  static bool is_over() noexcept { return over_; }
  static T& make() {
    static thread_local Owner owner;
    owner.adopt(new T);
    return *instance_;
  }

 private:
  struct Owner {
    void adopt(T* instance) noexcept { instance_ = instance; }
    ~Owner() {
      over_ = true;
      delete instance_;
      instance_ = nullptr;
    }
  };

  static inline constinit thread_local T* instance_ = nullptr;
  static inline constinit thread_local bool over_ = false;
};

/// Calls `use` with the calling thread's own T. Code that still runs after the thread's end (destructors of static
/// objects) gets one of its own for the call. std::bad_alloc becomes QZX_memory_alloc.
template <typename T, typename Use>
decltype(auto) with_thread_instance(Use&& use) {
  try {
    if (T* const instance = qz_ThreadInstance<T>::find()) return use(*instance);
    if (!qz_ThreadInstance<T>::is_over()) return use(qz_ThreadInstance<T>::make());
    T temporary;
    return use(temporary);
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
}

#endif  // QZLOG_FOUNDATION_THREAD_INSTANCE_H
