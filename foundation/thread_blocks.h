#ifndef QZLOG_FOUNDATION_THREAD_BLOCKS_H
#define QZLOG_FOUNDATION_THREAD_BLOCKS_H

#include <new>

#include "foundation/cache_line.h"
#include "foundation/memory_block.h"
#include "foundation/no_copies.h"
#include "foundation/thread_instance.h"

namespace qzlog {

/// Memory for objects of one class that are made and destroyed all the time: a thread keeps a few blocks that it freed
/// for the next ones. A block may be freed by another thread than the one that took it.
///
/// What is kept is written again and again, and has its cache lines for itself. That costs memory, so a thread makes no
/// more such blocks than it can keep.
template <typename T>
class alignas(kCacheLine) ThreadBlocks : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr unsigned kMost = QZLOG_HAS_ADDRESS_SANITIZER ? 0 : 8;

  ~ThreadBlocks() {
    while (count_ != 0) destroy_block(blocks_[--count_]);
  }

  /// Null without memory.
  static void* take() noexcept {
    ThreadBlocks* const blocks = ThreadInstance<ThreadBlocks>::find();
    if (blocks != nullptr && blocks->count_ != 0) [[likely]]
      return blocks->blocks_[--blocks->count_];
    return make(blocks);
  }
  static void give(void* block) noexcept {
    ThreadBlocks* blocks = ThreadInstance<ThreadBlocks>::find();
    if (blocks == nullptr) [[unlikely]]
      blocks = begin_to_keep();
    if (blocks != nullptr && blocks->count_ < kMost && is_apart(block)) [[likely]] {
      blocks->blocks_[blocks->count_++] = block;
    } else {
      destroy_block(block);
    }
  }

 private:
  template <typename U>
  friend class ThreadInstance;
  ThreadBlocks() = default;

  [[gnu::noinline]] static void* make(ThreadBlocks* blocks) noexcept {
    const bool apart = blocks != nullptr && blocks->made_apart_ < kMost;
    void* const block = make_block(sizeof(T), apart);
    if (apart && block != nullptr) ++blocks->made_apart_;
    return block;
  }

  /// Null when nothing can be kept for the thread or there is no memory: blocks are then freed at once.
  [[gnu::noinline]] static ThreadBlocks* begin_to_keep() noexcept {
    if (kMost == 0) return nullptr;
    try {
      return ThreadInstance<ThreadBlocks>::make();
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
  }

  unsigned count_ = 0;
  unsigned made_apart_ = 0;
  void* blocks_[kMost + 1];
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_THREAD_BLOCKS_H
