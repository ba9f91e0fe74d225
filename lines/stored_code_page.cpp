#include "lines/stored_code_page.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "foundation/locks.h"
#include "foundation/never_destroyed.h"
#include "message/code_page.h"
#include "qzlog/logcfg.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

constexpr char kFirstPrintable = ' ';
constexpr char kLastPrintable = '~';

/// Every printable character of ASCII behind every other one, and itself: what one means may depend on the one before.
std::string printable_pairs() {
  std::string text;
  for (char first = kFirstPrintable; first <= kLastPrintable; ++first) {
    for (char second = kFirstPrintable; second <= kLastPrintable; ++second) {
      text += first;
      text += second;
    }
  }
  return text;
}

[[noreturn]] void refuse(const char* reason, const char* code_page) {
  throw QZX_logging_illegal_argument((std::string(reason) + code_page).c_str(), 0);
}

/// Whether texts in it can hold zero bytes; every code page without them has a form without them for these characters.
bool has_zero_bytes(const char* code_page) {
  std::string encoded;
  if (!encode_text(icu::UnicodeString(u"A a\u00E9\u20AC"), code_page, encoded)) {
    refuse("entries cannot be written as JSON: there is no code page ", code_page);
  }
  return encoded.find('\0') != std::string::npos;
}

bool has_plain_printables(const char* code_page) {
  const std::string text = printable_pairs();
  const icu::UnicodeString decoded = decode_text(text.c_str(), code_page);
  std::string encoded;
  return decoded == icu::UnicodeString::fromUTF8(text) && encode_text(decoded, code_page, encoded) && encoded == text;
}

}  // namespace

StoredCodePage::StoredCodePage(const char* name)
    : name_(name), is_utf8_(qzlog::is_utf8(name)), has_plain_ascii_(is_utf8_) {
  if (is_utf8_) return;
  if (has_zero_bytes(name)) refuse("entries cannot be written as JSON: texts have zero bytes in the code page ", name);
  has_plain_ascii_ = has_plain_printables(name);
}

/// Those that were in force in the process, never released: few, and threads that still run use them at its end.
class StoredCodePages {
 public:
  const StoredCodePage& find(const char* name) {
    const StoredCodePage* const last = last_.load(std::memory_order_acquire);
    if (last != nullptr && last->has_name(name)) [[likely]]
      return *last;
    return find_or_add(name);
  }

 private:
  const StoredCodePage& find_or_add(const char* name) try {
    const MutexSentry lock(mutex_);
    const StoredCodePage* found = first_;
    while (found != nullptr && !found->has_name(name)) found = found->next_;
    if (found == nullptr) {
      std::unique_ptr<StoredCodePage> added(new StoredCodePage(name));
      added->next_ = first_;
      first_ = found = added.release();
    }
    last_.store(found, std::memory_order_release);
    return *found;
  } catch (const std::bad_alloc&) {
    throw QZX_memory_alloc();
  }

  std::atomic<const StoredCodePage*> last_{nullptr};
  Mutex mutex_;
  const StoredCodePage* first_ = nullptr;
};

namespace {

NeverDestroyed<StoredCodePages> code_pages;
NeverDestroyed<StoredCodePage> utf8_page("UTF-8");

/// Under the name that is used most. A call would take longer.
bool is_plainly_utf8(const char* name) {
  return name[0] == 'U' && name[1] == 'T' && name[2] == 'F' && name[3] == '-' && name[4] == '8' && name[5] == '\0';
}

}  // namespace

const char* stored_code_page_name() {
  return qz_LOG_LogConfig::IsICUEnabled() ? qz_LOG_LogConfig::GetCodePage() : "UTF-8";
}

const StoredCodePage& StoredCodePage::current() {
  const char* const name = stored_code_page_name();
  if (is_plainly_utf8(name)) return *utf8_page;
  return code_pages->find(name);
}

/// Without a way out of the loop: so many bytes are looked at at once.
bool is_printable_ascii(const char* text, std::size_t length) {
  constexpr auto kFirst = static_cast<unsigned char>(kFirstPrintable);
  constexpr auto kCount = static_cast<unsigned char>(kLastPrintable - kFirstPrintable + 1);
  unsigned char others = 0;
  for (std::size_t i = 0; i < length; ++i) {
    const auto place = static_cast<unsigned char>(static_cast<unsigned char>(text[i]) - kFirst);
    others |= static_cast<unsigned char>(place >= kCount);
  }
  return others == 0;
}

}  // namespace qzlog
