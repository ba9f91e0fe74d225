#ifndef QZLOG_FOUNDATION_OWNED_TEXT_H
#define QZLOG_FOUNDATION_OWNED_TEXT_H

#include <memory>

#include "foundation/qz_libc.h"
#include "qzlog/qz_exception.h"

struct qz_OwnedTextDeleter {
  void operator()(char* text) const { QZ_free(text); }
};

/// A zero-terminated text made by QZ_strdup, or null.
using qz_OwnedText = std::unique_ptr<char, qz_OwnedTextDeleter>;

/// A copy of `text`, null for null. Throws QZX_memory_alloc when there is no memory.
inline qz_OwnedText qz_duplicate_text(const char* text) {
  qz_OwnedText copy(QZ_strdup(text));
  if (copy == nullptr && text != nullptr) throw QZX_memory_alloc();
  return copy;
}

#endif  // QZLOG_FOUNDATION_OWNED_TEXT_H
