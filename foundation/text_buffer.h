#ifndef QZLOG_FOUNDATION_TEXT_BUFFER_H
#define QZLOG_FOUNDATION_TEXT_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

#include "foundation/allocate.h"
#include "foundation/no_copies.h"

/// A text that grows while it is put together: most fit inside the object, on the stack of its user. Running out of
/// memory throws QZX_memory_alloc.
class qz_TextBuffer : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr std::size_t kPadding = 16;

  // User-provided: the room is left uninitialised.
  qz_TextBuffer() {}  // NOLINT(modernize-use-equals-default)

  const char* data() const { return begin_; }
  std::size_t size() const { return size_; }

  void append(char character) {
    *reserve(1) = character;
    ++size_;
  }
  void append(const char* text, std::size_t length) {
    std::memcpy(reserve(length), text, length);
    size_ += length;
  }
  /// The same for a text behind which kPadding bytes may be read: short ones are copied with what follows them, which
  /// is not counted.
  void append_padded(const char* text, std::size_t length) {
    if (length > kPadding) return append(text, length);
    std::memcpy(reserve(kPadding), text, kPadding);
    size_ += length;
  }
  void append(const char* text) { append(text, std::strlen(text)); }

  /// Room for `count` bytes behind the text, which the caller fills and then counts in.
  char* reserve(std::size_t count) {
    if (count > capacity_ - size_) grow(count);
    return begin_ + size_;
  }
  void count_in(std::size_t count) { size_ += count; }

 private:
  static constexpr std::size_t kInlineCapacity = 1024;

  void grow(std::size_t count) {
    const std::size_t capacity = std::max(capacity_ * 2, size_ + count);
    std::unique_ptr<char[]> larger(qz_new_array<char>(capacity));
    std::memcpy(larger.get(), begin_, size_);
    heap_ = std::move(larger);
    begin_ = heap_.get();
    capacity_ = capacity;
  }

  char* begin_ = inline_;
  std::size_t size_ = 0;
  std::size_t capacity_ = kInlineCapacity;
  std::unique_ptr<char[]> heap_;
  char inline_[kInlineCapacity];
};

#endif  // QZLOG_FOUNDATION_TEXT_BUFFER_H
