#ifndef QZLOG_MESSAGE_ICU_MESSAGE_H
#define QZLOG_MESSAGE_ICU_MESSAGE_H

#include <utility>

#include <unicode/unistr.h>

#include "foundation/no_copies.h"
#include "foundation/text_buffer.h"
#include "message/icu_memory.h"

namespace qzlog {

/// A message of the ICU path: in UTF-8 where it could be assembled, else as ICU formatted it.
class IcuMessage : public qz_UTIL_no_inadvertant_copies {
 public:
  void clear() {
    is_utf8_ = true;
    utf8_.clear();
  }
  bool is_utf8() const { return is_utf8_; }
  TextBuffer& utf8() { return utf8_; }
  void set_formatted(icu::UnicodeString&& text) {
    formatted_ = std::move(text);
    is_utf8_ = false;
  }
  /// QZX_memory_alloc without memory.
  icu::UnicodeString to_unicode() const {
    if (!is_utf8_) return formatted_;
    return with_icu_memory([&] {
      const IcuMemory memory;
      icu::UnicodeString text =
          icu::UnicodeString::fromUTF8(icu::StringPiece(utf8_.data(), static_cast<int>(utf8_.size())));
      memory.check(text);
      return text;
    });
  }

 private:
  bool is_utf8_ = true;
  TextBuffer utf8_;
  icu::UnicodeString formatted_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_ICU_MESSAGE_H
