#ifndef QZLOG_SINKS_FORK_REGISTRY_H
#define QZLOG_SINKS_FORK_REGISTRY_H

#include <atomic>

#include "foundation/no_copies.h"

namespace qzlog {

/// What has files and threads that a process made by fork must leave to its parent.
class ForkRegistry {
 public:
  class Member : public qz_UTIL_no_inadvertant_copies {
   public:
    /// True in a process that was forked since it was added: whoever uses it makes another one, and destroys nothing.
    bool is_abandoned() const noexcept { return is_abandoned_.load(std::memory_order_relaxed); }

   protected:
    Member() = default;
    ~Member() = default;

   private:
    friend class ForkRegistry;
    /// In the forked process, which has one thread: gives up descriptors and mappings, takes no lock.
    virtual void abandon() noexcept = 0;
    /// While the process ends by exit().
    virtual void end() noexcept = 0;

    std::atomic<bool> is_abandoned_{false};
    Member* next_ = nullptr;
    Member* previous_ = nullptr;
  };

  /// QZX_memory_alloc.
  static void add(Member& member);
  static void remove(Member& member) noexcept;

 private:
  static void abandon_all() noexcept;
  [[gnu::destructor]] static void end_all() noexcept;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_FORK_REGISTRY_H
