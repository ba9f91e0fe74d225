#include "message/code_page.h"

#include <cstring>
#include <string>
#include <vector>

#include <unicode/ustring.h>

#include "foundation/thread_instance.h"

namespace {

bool is_utf8(const char* code_page) { return ucnv_compareNames(code_page, "UTF-8") == 0; }

/// The converter that a thread used last, nearly always the one it needs next.
class ThreadConverter : public qz_UTIL_no_inadvertant_copies {
 public:
  ~ThreadConverter() { ucnv_close(converter_); }

  /// Null when there is no such code page.
  UConverter* get(const char* code_page) {
    if (converter_ != nullptr && code_page_ == code_page) return converter_;
    ucnv_close(converter_);
    converter_ = nullptr;
    code_page_ = code_page;
    UErrorCode status = U_ZERO_ERROR;
    converter_ = ucnv_open(code_page[0] != '\0' ? code_page : nullptr, &status);
    return converter_;
  }

 private:
  std::string code_page_;
  UConverter* converter_ = nullptr;
};

/// The clones of shared converters that a thread has made.
class ThreadClones : public qz_UTIL_no_inadvertant_copies {
 public:
  ~ThreadClones() {
    for (const Clone& clone : clones_) ucnv_close(clone.converter);
  }

  UConverter* of(const UConverter* prototype) {
    for (const Clone& clone : clones_) {
      if (clone.prototype == prototype) return clone.converter;
    }
    clones_.reserve(clones_.size() + 1);
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = ucnv_clone(prototype, &status);
    if (converter == nullptr) throw QZX_memory_alloc();
    clones_.push_back({prototype, converter});
    return converter;
  }

 private:
  struct Clone {
    const UConverter* prototype;
    UConverter* converter;
  };
  std::vector<Clone> clones_;
};

bool encode_with(UConverter* converter, const icu::UnicodeString& text, char* buffer, int capacity, int& length) {
  UErrorCode status = U_ZERO_ERROR;
  length = ucnv_fromUChars(converter, buffer, capacity, text.getBuffer(), text.length(), &status);
  return U_SUCCESS(status);
}

}  // namespace

icu::UnicodeString decode_text(const char* text, const char* code_page) {
  // ICU opens a converter for every text in a named code page; its default converter and UTF-8 have ways of their own.
  if (code_page[0] == '\0') return icu::UnicodeString(text);
  if (is_utf8(code_page)) return icu::UnicodeString::fromUTF8(text);
  return with_thread_instance<ThreadConverter>([&](ThreadConverter& converters) {
    icu::UnicodeString decoded;
    UConverter* const converter = converters.get(code_page);
    if (converter == nullptr) {
      decoded.setToBogus();
      return decoded;
    }
    ucnv_resetToUnicode(converter);
    UErrorCode status = U_ZERO_ERROR;
    decoded = icu::UnicodeString(text, -1, converter, status);
    return decoded;
  });
}

bool decoded_length_exceeds(const char* text, const char* code_page, int limit) {
  // No UTF-8 text has more units than bytes; in some other code pages a byte can stand for two units.
  if (is_utf8(code_page) && std::strlen(text) <= static_cast<std::size_t>(limit)) return false;
  return decode_text(text, code_page).length() > limit;
}

bool encode_text(const icu::UnicodeString& text, const char* code_page, char* buffer, int capacity, int& length) {
  return with_thread_instance<ThreadConverter>([&](ThreadConverter& converters) {
    UConverter* const converter = converters.get(code_page);
    return converter != nullptr && encode_with(converter, text, buffer, capacity, length);
  });
}

bool SharedConverter::make_once(const char* code_page, bool keep_failure) {
  if (made_.load(std::memory_order_acquire)) return true;
  const std::lock_guard<std::mutex> lock(making_);
  if (made_.load(std::memory_order_relaxed)) return true;
  UErrorCode status = U_ZERO_ERROR;
  prototype_ = ucnv_open(code_page[0] != '\0' ? code_page : nullptr, &status);
  made_.store(prototype_ != nullptr || keep_failure, std::memory_order_release);
  return prototype_ != nullptr;
}

bool SharedConverter::encode(const icu::UnicodeString& text, char* buffer, int capacity, int& length) const {
  if (!made_.load(std::memory_order_acquire) || prototype_ == nullptr) return false;
  return with_thread_instance<ThreadClones>(
      [&](ThreadClones& clones) { return encode_with(clones.of(prototype_), text, buffer, capacity, length); });
}
