#include "message/code_page.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <unicode/ustring.h>

#include "foundation/fork_gate.h"
#include "foundation/thread_instance.h"
#include "message/icu_memory.h"

namespace qzlog {

namespace {

/// Null when there is no such code page.
UConverter* open_converter(const char* code_page) {
  return with_icu_memory([&] {
    const IcuMemory memory;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(
        ucnv_open(code_page[0] != '\0' ? code_page : nullptr, &status), ucnv_close);
    memory.check(status);
    return converter.release();
  });
}

/// The converter that a thread used last, nearly always the one it needs next.
class ThreadConverter : public qz_UTIL_no_inadvertant_copies {
 public:
  ~ThreadConverter() {
    const ForkDelay fork_delay;
    ucnv_close(converter_);
  }

  /// Null when there is no such code page.
  UConverter* get(const char* code_page) {
    if (converter_ != nullptr && code_page_ == code_page) return converter_;
    ucnv_close(converter_);
    converter_ = nullptr;
    code_page_ = code_page;
    converter_ = open_converter(code_page);
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
    const ForkDelay fork_delay;
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

bool are_next_eight_ascii(const unsigned char* bytes, std::size_t i, std::size_t length) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::uint64_t word = 0;
  if (length - i < sizeof(word)) return false;
  std::memcpy(&word, bytes + i, sizeof(word));
  return (word & kHighBits) == 0;
}

bool is_between(unsigned char byte, unsigned low, unsigned high) { return byte >= low && byte <= high; }

/// The bytes of the character outside ASCII that begins here; 0 when it is cut off, overlong, half a surrogate pair or
/// beyond the last code point.
std::size_t length_of_sequence(const unsigned char* bytes, std::size_t left) {
  const unsigned char lead = bytes[0];
  const std::size_t length = is_between(lead, 0xC2, 0xDF) ? 2 : is_between(lead, 0xE0, 0xEF) ? 3 : 4;
  if (!is_between(lead, 0xC2, 0xF4) || length > left) return 0;
  const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (!is_between(bytes[1], low, high)) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (!is_between(bytes[i], 0x80, 0xBF)) return 0;
  }
  return length;
}

[[gnu::noinline]] bool is_utf8_the_default() {
#if U_CHARSET_IS_UTF8
  return true;
#else
  const ForkDelay fork_delay;
  return ucnv_compareNames(ucnv_getDefaultName(), "UTF-8") == 0;
#endif
}

bool encode_with(UConverter* converter, const icu::UnicodeString& text, char* buffer, int capacity, int& length) {
  return with_icu_memory([&] {
    const IcuMemory memory;
    UErrorCode status = U_ZERO_ERROR;
    length = ucnv_fromUChars(converter, buffer, capacity, text.getBuffer(), text.length(), &status);
    memory.check(status);
    return static_cast<bool>(U_SUCCESS(status));
  });
}

/// With ICU's default converter, which threads share under a lock.
icu::UnicodeString decode_by_default(const char* text) {
  const ForkDelay fork_delay;
  return icu::UnicodeString(text);
}

/// Bogus when there is no such code page.
icu::UnicodeString decode_in_named_page(const char* text, const char* code_page) {
  const ForkDelay fork_delay;
  return with_thread_instance<ThreadConverter>([&](ThreadConverter& converters) {
    UConverter* const converter = converters.get(code_page);
    if (converter == nullptr) {
      icu::UnicodeString none;
      none.setToBogus();
      return none;
    }
    return with_icu_memory([&] {
      const IcuMemory memory;
      ucnv_resetToUnicode(converter);
      UErrorCode status = U_ZERO_ERROR;
      icu::UnicodeString decoded(text, -1, converter, status);
      memory.check(decoded, status);
      return decoded;
    });
  });
}

}  // namespace

bool is_utf8(const char* code_page) {
  // The names in use first: comparing as ICU does costs more than most of what depends on it.
  if (std::strcmp(code_page, "UTF-8") == 0 || std::strcmp(code_page, "UTF8") == 0) return true;
  if (code_page[0] == '\0') return is_utf8_the_default();
  return ucnv_compareNames(code_page, "UTF-8") == 0;
}

icu::UnicodeString decode_text(const char* text, const char* code_page) {
  // ICU opens a converter for every text in a named code page; its default converter and UTF-8 have ways of their own.
  const bool is_default = code_page[0] == '\0';
  if (!is_default && !is_utf8(code_page)) return decode_in_named_page(text, code_page);
  return with_icu_memory([&] {
    const IcuMemory memory;
    icu::UnicodeString decoded = is_default ? decode_by_default(text) : icu::UnicodeString::fromUTF8(text);
    memory.check(decoded);
    return decoded;
  });
}

bool decoded_length_exceeds(const char* text, std::size_t length, const char* code_page, int limit) {
  // No UTF-8 text has more units than bytes; in some other code pages a byte can stand for two units.
  if (length <= static_cast<std::size_t>(limit) && is_utf8(code_page)) return false;
  return decode_text(text, code_page).length() > limit;
}

bool is_valid_utf8(const char* text, std::size_t length) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
  std::size_t i = 0;
  while (i < length) {
    if (are_next_eight_ascii(bytes, i, length)) {
      i += 8;
      continue;
    }
    const std::size_t sequence = bytes[i] < 0x80 ? 1 : length_of_sequence(bytes + i, length - i);
    if (sequence == 0) return false;
    i += sequence;
  }
  return true;
}

bool append_utf8(const icu::UnicodeString& text, TextBuffer& target) {
  const int capacity = text.length() * 3;
  char* const begin = target.reserve(static_cast<std::size_t>(capacity));
  int length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8(begin, capacity, &length, text.getBuffer(), text.length(), &status);
  if (U_FAILURE(status)) return false;
  target.count_in(static_cast<std::size_t>(length));
  return true;
}

bool encode_text(const icu::UnicodeString& text, const char* code_page, char* buffer, int capacity, int& length) {
  const ForkDelay fork_delay;
  return with_thread_instance<ThreadConverter>([&](ThreadConverter& converters) {
    UConverter* const converter = converters.get(code_page);
    return converter != nullptr && encode_with(converter, text, buffer, capacity, length);
  });
}

bool encode_text(const icu::UnicodeString& text, const char* code_page, std::string& encoded) {
  // Room for most texts in most code pages; for the others the length that they need is known after the first try.
  encoded.resize(static_cast<std::size_t>(text.length()) * 3 + 1);
  int length = 0;
  if (!encode_text(text, code_page, encoded.data(), static_cast<int>(encoded.size()), length)) {
    if (length <= static_cast<int>(encoded.size())) return false;
    encoded.resize(static_cast<std::size_t>(length));
    if (!encode_text(text, code_page, encoded.data(), length, length)) return false;
  }
  encoded.resize(static_cast<std::size_t>(length));
  return true;
}

bool SharedConverter::make_once(const char* code_page, bool keep_failure) {
  if (made_.load(std::memory_order_acquire)) return true;
  const MutexSentry lock(making_);
  if (made_.load(std::memory_order_relaxed)) return true;
  prototype_ = open_converter(code_page);
  is_utf8_ = prototype_ != nullptr && ucnv_getType(prototype_) == UCNV_UTF8;
  made_.store(prototype_ != nullptr || keep_failure, std::memory_order_release);
  return prototype_ != nullptr;
}

bool SharedConverter::encode(const icu::UnicodeString& text, char* buffer, int capacity, int& length) const {
  if (!made_.load(std::memory_order_acquire) || prototype_ == nullptr) return false;
  const ForkDelay fork_delay;
  return with_thread_instance<ThreadClones>(
      [&](ThreadClones& clones) { return encode_with(clones.of(prototype_), text, buffer, capacity, length); });
}

}  // namespace qzlog
