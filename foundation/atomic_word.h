#ifndef QZLOG_FOUNDATION_ATOMIC_WORD_H
#define QZLOG_FOUNDATION_ATOMIC_WORD_H

#include <atomic>

namespace qzlog {

/// Process-wide words keep their plain exported types for existing callers; inside the library every access goes
/// through these two, so that a setter at start-up never races with a reader.

template <typename T>
T load_word(const T& word) noexcept {
  return std::atomic_ref<T>(const_cast<T&>(word)).load(std::memory_order_relaxed);
}

template <typename T>
void store_word(T& word, T value) noexcept {
  std::atomic_ref<T>(word).store(value, std::memory_order_relaxed);
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_ATOMIC_WORD_H
