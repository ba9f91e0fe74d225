#ifndef QZLOG_FOUNDATION_OWNED_TEXT_H
#define QZLOG_FOUNDATION_OWNED_TEXT_H

#include <memory>

#include "foundation/qz_libc.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

/// The empty text that all owners share: definitions are full of them.
inline char shared_empty_text[1] = {'\0'};

struct OwnedTextDeleter {
  void operator()(char* text) const {
    if (text != shared_empty_text) QZ_free(text);
  }
};

/// A zero-terminated text made by QZ_strdup, the shared empty one, or null. Not to be written to.
using OwnedText = std::unique_ptr<char, OwnedTextDeleter>;

/// A copy of `text`, null for null. Throws QZX_memory_alloc when there is no memory.
inline OwnedText duplicate_text(const char* text) {
  if (text != nullptr && text[0] == '\0') return OwnedText(shared_empty_text);
  OwnedText copy(QZ_strdup(text));
  if (copy == nullptr && text != nullptr) throw QZX_memory_alloc();
  return copy;
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_OWNED_TEXT_H
