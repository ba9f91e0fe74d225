#include "sinks/fork_registry.h"

#include <pthread.h>

#include "foundation/locks.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

// Guarded by the mutex, which no thread holds when a process forks.
constinit Mutex mutex;
constinit ForkRegistry::Member* first = nullptr;
constinit bool has_handler = false;

}  // namespace

void ForkRegistry::add(Member& member) {
  const MutexSentry hold(mutex);
  if (!has_handler && pthread_atfork(nullptr, nullptr, abandon_all) != 0) throw QZX_memory_alloc();
  has_handler = true;
  member.next_ = first;
  if (first != nullptr) first->previous_ = &member;
  first = &member;
}

void ForkRegistry::remove(Member& member) noexcept {
  const MutexSentry hold(mutex);
  if (member.is_abandoned()) return;
  if (member.next_ != nullptr) member.next_->previous_ = member.previous_;
  (member.previous_ != nullptr ? member.previous_->next_ : first) = member.next_;
}

void ForkRegistry::abandon_all() noexcept {
  for (Member* member = first; member != nullptr; member = member->next_) {
    member->is_abandoned_.store(true, std::memory_order_relaxed);
    member->abandon();
  }
  first = nullptr;
}

void ForkRegistry::end_all() noexcept {
  const MutexSentry hold(mutex);
  for (Member* member = first; member != nullptr; member = member->next_) member->end();
}

}  // namespace qzlog
