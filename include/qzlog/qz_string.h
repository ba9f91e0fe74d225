#ifndef QZLOG_QZ_STRING_H
#define QZLOG_QZ_STRING_H

#include "qzlog/export.h"

/// An owned text of bytes with a terminating zero byte; short texts are kept inside the object. The length is counted,
/// so the text may hold zero bytes. Value semantics; one thread uses one object at a time.
/// Whatever needs memory and gets none throws QZX_memory_alloc and leaves the object as it was.
class QZLOG_EXPORT qz_String {
 public:
  qz_String() noexcept;
  /// A copy of `text`; null gives the empty string.
  qz_String(const char* text);  // NOLINT(google-explicit-constructor): callers pass literals
  /// `count` copies of `fill`.
  qz_String(unsigned count, char fill);
  qz_String(const qz_String& other);
  qz_String(qz_String&& other) noexcept;
  ~qz_String();
  qz_String& operator=(const qz_String& other);
  qz_String& operator=(qz_String&& other) noexcept;

  /// Number of bytes before the terminator.
  unsigned length() const noexcept { return length_; }
  bool empty() const noexcept { return length_ == 0; }
  /// Never null. Valid until the string is changed or destroyed.
  const char* c_str() const noexcept { return text_; }

  /// Replaces the contents by the first `length` bytes of `text` (which may lie inside this string). Null with length 0
  /// clears.
  void _assign(const char* text, unsigned length);
  /// 0 when equal up to the terminator, else with the sign of strcmp. Null compares as the empty text.
  int compare_string(const char* other) const noexcept;

  qz_String& operator+=(const char* text);
  qz_String& operator+=(char character);
  /// Appends exactly `length` bytes, zero bytes included.
  qz_String& append(const char* text, unsigned length);

  /// The character at `index`; QZX_index_out_of_bounds (null message) when `index` is not below the length.
  char operator[](unsigned index) const;

  /// Texts up to this length take no memory.
  enum : unsigned { kInlineCapacity = 19 };

 private:
  QZLOG_NO_EXPORT void reserve(unsigned capacity);
  bool is_inline() const noexcept { return text_ == inline_text_; }

  unsigned length_;
  unsigned capacity_;
  char* text_;
  char inline_text_[kInlineCapacity + 1];
};

QZLOG_EXPORT qz_String operator+(const qz_String& left, const qz_String& right);

#endif  // QZLOG_QZ_STRING_H
