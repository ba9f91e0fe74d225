#ifndef QZLOG_FOUNDATION_TEXT_ROOM_H
#define QZLOG_FOUNDATION_TEXT_ROOM_H

#include <algorithm>
#include <cstddef>
#include <memory>

#include "foundation/allocate.h"
#include "foundation/no_copies.h"

namespace qzlog {

/// Room for a text whose greatest length is known: within the object, on the stack of its user, unless it needs more.
class TextRoom : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr std::size_t kInlineSize = 8096;

  /// For `size` bytes or more. QZX_memory_alloc when there is no memory for them.
  explicit TextRoom(std::size_t size) : size_(std::max(size, sizeof(inline_))) {
    if (size_ > sizeof(inline_)) heap_.reset(new_array<char>(size_));
  }

  char* data() { return heap_ != nullptr ? heap_.get() : inline_; }
  int size() const { return static_cast<int>(size_); }

 private:
  std::size_t size_;
  std::unique_ptr<char[]> heap_;
  char inline_[kInlineSize];
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_TEXT_ROOM_H
