#ifndef QZLOG_FOUNDATION_TEXT_BUFFER_H
#define QZLOG_FOUNDATION_TEXT_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

#include "foundation/allocate.h"
#include "foundation/no_copies.h"
#include "foundation/short_text.h"

namespace qzlog {

/// A text that grows while it is put together: most fit inside the object, on the stack of its user. Running out of
/// memory throws QZX_memory_alloc.
class TextBuffer : public qz_UTIL_no_inadvertant_copies {
 public:
  // User-provided: the room is left uninitialised.
  TextBuffer() {}  // NOLINT(modernize-use-equals-default)

  const char* data() const { return begin_; }
  std::size_t size() const { return size_; }

  /// Keeps its room.
  void clear() { size_ = 0; }
  void append(char character) {
    *reserve(1) = character;
    ++size_;
  }
  void append(const char* text, std::size_t length) {
    copy_text(reserve(length), text, length);
    size_ += length;
  }
  void append(const char* text) { append(text, std::strlen(text)); }

  /// Room for `count` bytes behind the text, which the caller fills and then counts in.
  char* reserve(std::size_t count) {
    if (count > capacity_ - size_) grow(count);
    return begin_ + size_;
  }
  void count_in(std::size_t count) { size_ += count; }
  /// Copies the text as strncpy does into `size` bytes, at least one: cut to one less, the rest filled with zeros.
  void copy_padded(char* target, std::size_t size) const {
    const std::size_t length = std::min(size_, size - 1);
    std::memcpy(target, begin_, length);
    std::memset(target + length, 0, size - length);
  }
  /// How many bytes may be appended before it has to grow.
  std::size_t room() const { return capacity_ - size_; }

 private:
  static constexpr std::size_t kInlineCapacity = 1024;

  void grow(std::size_t count) {
    const std::size_t capacity = std::max(capacity_ * 2, size_ + count);
    std::unique_ptr<char[]> larger(new_array<char>(capacity));
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

/// Appends to a text buffer as that does, but knows the end of the text by itself: in a function that appends many
/// short texts the compiler can keep it in registers, as long as no other function is handed the object. The buffer
/// itself is used through with_buffer only while there is a cursor, and is complete when the cursor is gone.
class TextCursor : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr std::size_t kPadding = 16;

  explicit TextCursor(TextBuffer& buffer) : buffer_(buffer) { start(); }
  ~TextCursor() { stop(); }

  void append(char character) {
    *reserve(1) = character;
    ++end_;
  }
  void append(const char* text, std::size_t length) {
    copy_text(reserve(length), text, length);
    end_ += length;
  }
  void append(const char* text) { append(text, std::strlen(text)); }
  /// The same for a text behind which kPadding bytes may be read: short ones are copied with what follows them, which
  /// is not counted.
  void append_padded(const char* text, std::size_t length) {
    if (length > kPadding) return append(text, length);
    std::memcpy(reserve(kPadding), text, kPadding);
    end_ += length;
  }
  char* reserve(std::size_t count) {
    if (count > static_cast<std::size_t>(limit_ - end_)) {
      with_buffer([count](TextBuffer& buffer) { buffer.reserve(count); });
    }
    return end_;
  }
  void count_in(std::size_t count) { end_ += count; }

  /// Calls append(TextBuffer&).
  template <typename Append>
  void with_buffer(Append append) {
    stop();
    append(buffer_);
    start();
  }

 private:
  void start() {
    end_ = buffer_.reserve(0);
    limit_ = end_ + buffer_.room();
  }
  void stop() { buffer_.count_in(static_cast<std::size_t>(end_ - buffer_.reserve(0))); }

  TextBuffer& buffer_;
  char* end_;
  char* limit_;
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_TEXT_BUFFER_H
