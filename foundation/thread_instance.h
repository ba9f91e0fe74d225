#ifndef QZLOG_FOUNDATION_THREAD_INSTANCE_H
#define QZLOG_FOUNDATION_THREAD_INSTANCE_H

#include <new>

#include "foundation/thread_end.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

/// The calling thread's own T: made on first use, destroyed when the thread ends (foundation/thread_end.h). Only a
/// pointer is thread-local, so that reaching it costs a load and the library stays within what a process has room for
/// when it loads one at run time.
template <typename T>
class ThreadInstance {
 public:
  /// Null before the first use and after the thread's end.
  static T* find() noexcept { return instance_; }
  /// Null when nothing can be kept for the thread, any more or at all. Throws std::bad_alloc.
  static T* make() {
    if (ThreadEnd::is_over()) return nullptr;
    auto* const kept = new Kept;
    if (!ThreadEnd::add(kept)) {
      delete kept;
      return nullptr;
    }
    return instance_ = &kept->value;
  }

 private:
  struct Kept : ThreadEnd::Duty {
    // cppcheck-suppress uninitDerivedMemberVar
    Kept() : Duty{&release, nullptr} {}
    // It is still found while it is destroyed.
    static void release(Duty* duty) noexcept {
      delete static_cast<Kept*>(duty);
      instance_ = nullptr;
    }
    T value;
  };

  static inline constinit thread_local T* instance_ = nullptr;
};

/// Calls `use` with the calling thread's own T, or where none can be kept (in what still runs after the thread's end)
/// with one of its own for the call. std::bad_alloc becomes QZX_memory_alloc.
template <typename T, typename Use>
decltype(auto) with_thread_instance(Use&& use) {
  try {
    if (T* const instance = ThreadInstance<T>::find()) return use(*instance);
    if (T* const instance = ThreadInstance<T>::make()) return use(*instance);
    T temporary;
    return use(temporary);
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_THREAD_INSTANCE_H
