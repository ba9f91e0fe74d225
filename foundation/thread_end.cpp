#include "foundation/thread_end.h"

#include <pthread.h>

namespace qzlog {

/// Made when the library is loaded. A process that has used up its keys before goes without: nothing can be added then.
class ThreadEnd::Key {
 public:
  Key() : is_made_(pthread_key_create(&key_, [](void* latest) { release_all(latest); }) == 0) {}

  Duty* latest() const { return is_made_ ? static_cast<Duty*>(pthread_getspecific(key_)) : nullptr; }
  /// The first of a thread may need memory.
  bool set_latest(const Duty* duty) const { return is_made_ && pthread_setspecific(key_, duty) == 0; }

 private:
  pthread_key_t key_ = {};
  bool is_made_;
};

// Zero, and so not made, in static objects that are initialised earlier.
const ThreadEnd::Key ThreadEnd::key_;

bool ThreadEnd::add(Duty* duty) noexcept {
  if (over_) return false;
  duty->next = key_.latest();
  return key_.set_latest(duty);
}

void ThreadEnd::release_all(void* latest) noexcept {
  over_ = true;
  auto* duty = static_cast<Duty*>(latest);
  while (duty != nullptr) {
    Duty* const next = duty->next;
    duty->release(duty);
    duty = next;
  }
}

}  // namespace qzlog
