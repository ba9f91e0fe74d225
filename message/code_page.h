#ifndef QZLOG_MESSAGE_CODE_PAGE_H
#define QZLOG_MESSAGE_CODE_PAGE_H

#include <atomic>
#include <string>

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include "foundation/locks.h"
#include "foundation/no_copies.h"
#include "foundation/text_buffer.h"

namespace qzlog {

/// Texts in code pages. A code page is named as ICU's converters are; "" means ICU's default converter. Safe from any
/// thread: no open converter is used by two threads. Running out of memory throws QZX_memory_alloc.

/// `text` decoded; a bogus (empty) string when there is no such code page. Bytes that stand for nothing become what ICU
/// puts in their place.
icu::UnicodeString decode_text(const char* text, const char* code_page);

/// Whether a code page is UTF-8, under whichever of its names.
bool is_utf8(const char* code_page);

/// Whether `text` of `length` bytes has more than `limit` UTF-16 code units when decoded.
bool decoded_length_exceeds(const char* text, std::size_t length, const char* code_page, int limit);

/// Whether ICU decodes every byte of a UTF-8 text to what it stands for: then decoding and encoding it again gives the
/// same bytes.
bool is_valid_utf8(const char* text, std::size_t length);

/// Appends `text` in UTF-8. False, with nothing appended, when it has half a surrogate pair.
bool append_utf8(const icu::UnicodeString& text, TextBuffer& target);

/// Encodes into `buffer` of `capacity` bytes; no terminator is written when the text fills it. `length` becomes the
/// number of bytes that the whole text needs. False when the code page is unknown or the text does not fit; the buffer
/// may then hold a part of it.
bool encode_text(const icu::UnicodeString& text, const char* code_page, char* buffer, int capacity, int& length);

/// The same into a text of any length. False when the code page is unknown; the text is then of no use.
bool encode_text(const icu::UnicodeString& text, const char* code_page, std::string& encoded);

/// A converter that is made once for the whole process, on first use, and used by all threads, each through a clone of
/// its own. Objects are static and never released, like the converter.
class SharedConverter : public qz_UTIL_no_inadvertant_copies {
 public:
  constexpr SharedConverter() = default;

  /// Opens the converter of a code page unless an earlier call did. False when this call tried and failed: the failure
  /// is kept if `keep_failure` says so (encode then fails), else the next call tries again. One for lack of memory is
  /// never kept.
  bool make_once(const char* code_page, bool keep_failure);
  /// Whether the converter was made and writes UTF-8.
  bool is_utf8() const { return made_.load(std::memory_order_acquire) && is_utf8_; }
  /// As encode_text; false too when the converter was not made.
  bool encode(const icu::UnicodeString& text, char* buffer, int capacity, int& length) const;

 private:
  Mutex making_;
  std::atomic<bool> made_{false};
  UConverter* prototype_ = nullptr;
  bool is_utf8_ = false;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_CODE_PAGE_H
