#include "qzlog/qz_string.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "foundation/short_text.h"

using namespace qzlog;

namespace {

constexpr unsigned kMaxLength = std::numeric_limits<unsigned>::max() - 1;

unsigned checked_length(std::size_t length) {
  if (length > kMaxLength) throw QZX_memory_alloc();
  return static_cast<unsigned>(length);
}

}  // namespace

qz_String::qz_String() noexcept : length_(0), capacity_(kInlineCapacity), text_(inline_text_) {
  inline_text_[0] = '\0';
}

qz_String::qz_String(const char* text) : qz_String() {
  if (text != nullptr) _assign(text, checked_length(std::strlen(text)));
}

qz_String::qz_String(unsigned count, char fill) : qz_String() {
  reserve(count);
  std::memset(text_, fill, count);
  text_[count] = '\0';
  length_ = count;
}

qz_String::qz_String(const qz_String& other) : qz_String() { _assign(other.text_, other.length_); }

qz_String::qz_String(qz_String&& other) noexcept : qz_String() { *this = std::move(other); }

qz_String::~qz_String() {
  if (!is_inline()) release_text(text_, capacity_);
}

qz_String& qz_String::operator=(const qz_String& other) {
  _assign(other.text_, other.length_);
  return *this;
}

qz_String& qz_String::operator=(qz_String&& other) noexcept {
  if (this == &other) return *this;
  if (other.is_inline()) {
    // Fits in any capacity: none is below the inline one.
    std::memcpy(text_, other.text_, other.length_ + 1U);
    length_ = other.length_;
  } else {
    if (!is_inline()) release_text(text_, capacity_);
    text_ = std::exchange(other.text_, other.inline_text_);
    length_ = other.length_;
    capacity_ = std::exchange(other.capacity_, static_cast<unsigned>(kInlineCapacity));
  }
  other.length_ = 0;
  other.text_[0] = '\0';
  return *this;
}

void qz_String::_assign(const char* text, unsigned length) {
  if (length > capacity_) {
    // Built aside, so that `text` may lie in this string and nothing changes without memory.
    qz_String fresh;
    fresh.reserve(length);
    fresh._assign(text, length);
    *this = std::move(fresh);
    return;
  }
  copy_text(text_, text, length);
  text_[length] = '\0';
  length_ = length;
}

int qz_String::compare_string(const char* other) const noexcept {
  return std::strcmp(text_, other == nullptr ? "" : other);
}

qz_String& qz_String::operator+=(const char* text) {
  return text == nullptr ? *this : append(text, checked_length(std::strlen(text)));
}

qz_String& qz_String::operator+=(char character) { return append(&character, 1); }

qz_String& qz_String::append(const char* text, unsigned length) {
  const unsigned total = checked_length(std::size_t{length_} + length);
  if (total > capacity_) {
    qz_String grown;
    grown.reserve(capacity_ > kMaxLength / 2 ? kMaxLength : (total > capacity_ * 2 ? total : capacity_ * 2));
    grown._assign(text_, length_);
    grown.append(text, length);
    *this = std::move(grown);
    return *this;
  }
  copy_text(text_ + length_, text, length);
  text_[total] = '\0';
  length_ = total;
  return *this;
}

char qz_String::operator[](unsigned index) const {
  if (index >= length_) throw QZX_index_out_of_bounds();
  return text_[index];
}

/// Only called on a string without heap memory.
void qz_String::reserve(unsigned capacity) {
  if (capacity <= capacity_) return;
  const unsigned rounded = std::max(checked_length(capacity), kShortTextLength);
  text_ = allocate_text(rounded);
  text_[0] = '\0';
  capacity_ = rounded;
}

qz_String operator+(const qz_String& left, const qz_String& right) {
  qz_String joined(left);
  joined.append(right.c_str(), right.length());
  return joined;
}
