#include "message/text_cut.h"

#include "foundation/qz_libc.h"
#include "message/code_page.h"
#include "message/icu_memory.h"
#include "qzlog/qz_exception.h"

namespace qzlog {
namespace {

[[noreturn]] void throw_small_buffer() {
  throw QZX_logging_illegal_argument("The buf length is smaller than cut length!", 0);
}

}  // namespace

void cut_to_bytes(const char* text, int limit, char* buffer, int capacity) {
  if (capacity < limit + 1) throw_small_buffer();
  QZ_strncpy(buffer, text, static_cast<std::size_t>(limit));
  buffer[limit] = '\0';
}

void cut_to_units(const char* text, const char* code_page, int limit, char* buffer, int capacity) {
  int length = 0;
  const icu::UnicodeString whole = decode_text(text, code_page);
  const icu::UnicodeString cut = with_icu_memory([&] {
    const IcuMemory memory;
    icu::UnicodeString beginning(whole, 0, limit);
    memory.check(beginning);
    return beginning;
  });
  if (!encode_text(cut, code_page, buffer, capacity, length) || length >= capacity) throw_small_buffer();
  buffer[length] = '\0';
}

}  // namespace qzlog
