#ifndef QZLOG_TESTS_SUPPORT_BLOCKED_HEAP_H
#define QZLOG_TESTS_SUPPORT_BLOCKED_HEAP_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace qz_test {

/// While it lives, something is mapped behind the process's heap, so that the C library finds the room for more
/// elsewhere, with errno set.
class BlockedHeap {
 public:
  BlockedHeap() {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(sbrk(0)) + page - 1) & ~(page - 1);
    size_ = page;
    page_ =
        mmap(reinterpret_cast<void*>(end), size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
  }
  ~BlockedHeap() {
    if (holds() && munmap(page_, size_) != 0) ADD_FAILURE() << "the page behind the heap stays";
  }
  BlockedHeap(const BlockedHeap&) = delete;
  BlockedHeap& operator=(const BlockedHeap&) = delete;

  /// False where something was mapped there before.
  bool holds() const { return page_ != MAP_FAILED; }

 private:
  std::size_t size_;
  void* page_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_BLOCKED_HEAP_H
