#ifndef QZLOG_FOUNDATION_NEVER_DESTROYED_H
#define QZLOG_FOUNDATION_NEVER_DESTROYED_H

#include <new>
#include <utility>

#include "foundation/no_copies.h"

namespace qzlog {

/// A static object without a destructor: a process may end while its threads log, and what they use then has to be
/// there until it is gone. Made when the library is loaded; what it owns is given back by the system.
template <typename T>
class NeverDestroyed : public qz_UTIL_no_inadvertant_copies {
 public:
  template <typename... Arguments>
  explicit NeverDestroyed(Arguments&&... arguments) {
    new (static_cast<void*>(storage_)) T(std::forward<Arguments>(arguments)...);
  }

  T* get() { return std::launder(reinterpret_cast<T*>(storage_)); }
  T& operator*() { return *get(); }
  T* operator->() { return get(); }

 private:
  alignas(T) unsigned char storage_[sizeof(T)];
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_NEVER_DESTROYED_H
