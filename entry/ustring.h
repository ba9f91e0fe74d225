#ifndef QZLOG_ENTRY_USTRING_H
#define QZLOG_ENTRY_USTRING_H

#include <utility>

/// The value of the MBChar attributes: an owned, counted, zero-terminated run of bytes, or no text at all. Running out
/// of memory throws QZX_memory_alloc.
class _qz_LOG_ustring {
 public:
  _qz_LOG_ustring() noexcept = default;
  /// A copy of `text`; null gives no text.
  explicit _qz_LOG_ustring(const char* text);
  /// A copy of the first `size` bytes of `text`.
  _qz_LOG_ustring(const char* text, unsigned size);
  _qz_LOG_ustring(const _qz_LOG_ustring& other);
  _qz_LOG_ustring(_qz_LOG_ustring&& other) noexcept
      : length(std::exchange(other.length, 0)), data(std::exchange(other.data, nullptr)) {}
  _qz_LOG_ustring& operator=(const _qz_LOG_ustring& other);
  _qz_LOG_ustring& operator=(_qz_LOG_ustring&& other) noexcept {
    std::swap(length, other.length);
    std::swap(data, other.data);
    return *this;
  }
  ~_qz_LOG_ustring() {
    if (data != nullptr) release();
  }

  /// Back to no text.
  void set_zero() noexcept;
  /// The text, "" when there is none. Valid until the value is changed or destroyed.
  const char* text() const noexcept { return data == nullptr ? "" : data; }

  unsigned length = 0;   ///< bytes without the terminator
  char* data = nullptr;  ///< length + 1 bytes, or null; it goes with the length

 private:
  void release() noexcept;
};

#endif  // QZLOG_ENTRY_USTRING_H
