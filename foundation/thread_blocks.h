#ifndef QZLOG_FOUNDATION_THREAD_BLOCKS_H
#define QZLOG_FOUNDATION_THREAD_BLOCKS_H

#include <cstddef>
#include <new>

#include "foundation/no_copies.h"
#include "foundation/thread_instance.h"

// Under the address sanitizer every object has memory of its own, so that its use after its end is seen.
#if defined(__SANITIZE_ADDRESS__)
#define QZLOG_HAS_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#define QZLOG_HAS_ADDRESS_SANITIZER __has_feature(address_sanitizer)
#else
#define QZLOG_HAS_ADDRESS_SANITIZER 0
#endif

/// Memory for objects of one class that are made and destroyed all the time: a thread keeps a few blocks that it freed
/// for the next ones. A block may be freed by another thread than the one that took it.
template <typename T>
class qz_ThreadBlocks : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr unsigned kMost = QZLOG_HAS_ADDRESS_SANITIZER ? 0 : 8;

  ~qz_ThreadBlocks() {
    while (count_ != 0) ::operator delete(blocks_[--count_]);
  }

  /// Null without memory.
  static void* take() noexcept {
    qz_ThreadBlocks* const blocks = qz_ThreadInstance<qz_ThreadBlocks>::find();
    if (blocks != nullptr && blocks->count_ != 0) return blocks->blocks_[--blocks->count_];
    return ::operator new(sizeof(T), std::nothrow);
  }
  static void give(void* block) noexcept {
    qz_ThreadBlocks* blocks = qz_ThreadInstance<qz_ThreadBlocks>::find();
    if (blocks == nullptr) blocks = begin_to_keep();
    if (blocks != nullptr && blocks->count_ < kMost) {
      blocks->blocks_[blocks->count_++] = block;
    } else {
      ::operator delete(block);
    }
  }

 private:
  template <typename U>
  friend class qz_ThreadInstance;
  qz_ThreadBlocks() = default;

  /// Null when the thread is over or there is no memory: blocks are then freed at once.
  static qz_ThreadBlocks* begin_to_keep() noexcept {
    if (kMost == 0 || qz_ThreadInstance<qz_ThreadBlocks>::is_over()) return nullptr;
    try {
      return &qz_ThreadInstance<qz_ThreadBlocks>::make();
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
  }

  unsigned count_ = 0;
  void* blocks_[kMost + 1];
};

#endif  // QZLOG_FOUNDATION_THREAD_BLOCKS_H
