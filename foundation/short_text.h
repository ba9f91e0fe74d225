#ifndef QZLOG_FOUNDATION_SHORT_TEXT_H
#define QZLOG_FOUNDATION_SHORT_TEXT_H

#include <cstddef>
#include <cstring>

#include "foundation/allocate.h"
#include "foundation/thread_blocks.h"

namespace qzlog {

// Most texts of a log entry are short. Here is what they are copied and stored with.

/// Copies two overlapping blocks, the first and the last of a text. Both are read before one is written.
template <std::size_t block_size>
void copy_ends(char* target, const char* source, std::size_t length) {
  char first[block_size];
  char last[block_size];
  std::memcpy(first, source, block_size);
  std::memcpy(last, source + length - block_size, block_size);
  std::memcpy(target, first, block_size);
  std::memcpy(target + length - block_size, last, block_size);
}

/// As memmove, without a call for up to 32 bytes.
inline void copy_text(char* target, const char* source, std::size_t length) {
  if (length > 32) {
    std::memmove(target, source, length);
  } else if (length >= 16) {
    copy_ends<16>(target, source, length);
  } else if (length >= 8) {
    copy_ends<8>(target, source, length);
  } else if (length >= 4) {
    copy_ends<4>(target, source, length);
  } else if (length >= 2) {
    copy_ends<2>(target, source, length);
  } else if (length == 1) {
    *target = *source;
  }
}

/// The longest text whose memory a thread keeps for its next ones, without the terminator.
constexpr unsigned kShortTextLength = 63;

struct ShortTextBlock {
  char bytes[kShortTextLength + 1];
};

/// Memory for a text of so many bytes and a terminator. Throws QZX_memory_alloc.
inline char* allocate_text(unsigned length) {
  if (length > kShortTextLength) return new_array<char>(std::size_t{length} + 1);
  void* const block = ThreadBlocks<ShortTextBlock>::take();
  if (block == nullptr) throw QZX_memory_alloc();
  return static_cast<char*>(block);
}

/// With the length that it was allocated for.
inline void release_text(char* text, unsigned length) noexcept {
  if (length > kShortTextLength) {
    delete[] text;
  } else {
    ThreadBlocks<ShortTextBlock>::give(text);
  }
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_SHORT_TEXT_H
