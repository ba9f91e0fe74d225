// Takes the input as an ICU message pattern: what the nesting of its arguments is bounded by has to be what ICU's
// parser comes to, and what may be parsed has to be parsed and formatted on the stack of a small thread.
#include "message/pattern_nesting.h"

#include <pthread.h>
#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/msgfmt.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

using namespace qzlog;

namespace {

constexpr std::size_t kStackSize = std::size_t{256} * 1024;
constexpr std::size_t kMostBytes = std::size_t{64} * 1024;

/// The bound may be more than ICU comes to only where ICU stops at a mistake.
void compare_with_icu(const icu::UnicodeString& pattern, UMessagePatternApostropheMode mode) {
  const int bounded = bound_pattern_nesting(pattern, mode, kMostPatternNesting);
  if (bounded > kMostPatternNesting) return;
  UErrorCode status = U_ZERO_ERROR;
  icu::MessagePattern parsed(mode, status);
  parsed.parse(pattern, nullptr, status);
  const int nesting = pattern_nesting(parsed);
  if (nesting > bounded || (U_SUCCESS(status) && nesting != bounded)) __builtin_trap();
}

void format(const icu::UnicodeString& pattern) {
  UErrorCode status = U_ZERO_ERROR;
  icu::MessagePattern parsed(status);
  if (!parse_pattern(pattern, parsed, status)) return;
  const icu::MessageFormat formatter(pattern, icu::Locale::getUS(), status);
  const icu::Formattable values[] = {1.0, -1234567, icu::UnicodeString(u"text"), 2.5};
  icu::UnicodeString message;
  icu::FieldPosition position;
  if (U_SUCCESS(status)) formatter.format(values, 4, message, position, status);
}

void* use(void* argument) {
  const auto& pattern = *static_cast<const icu::UnicodeString*>(argument);
  compare_with_icu(pattern, UMSGPAT_APOS_DOUBLE_OPTIONAL);
  compare_with_icu(pattern, UMSGPAT_APOS_DOUBLE_REQUIRED);
  format(pattern);
  return nullptr;
}

/// The input is UTF-8; a first byte that no UTF-8 begins with says how often the rest is repeated, since depth takes
/// more bytes than chance gives.
icu::UnicodeString pattern_of(const std::uint8_t* bytes, std::size_t size) {
  const bool is_repeated = size > 1 && bytes[0] >= 0xF8;
  const std::size_t skipped = is_repeated ? 1 : 0;
  const std::size_t wanted = is_repeated ? std::size_t{1} << (2 * (bytes[0] - 0xF8U)) : 1;
  const std::size_t count = std::clamp<std::size_t>(kMostBytes / (size + 1), 1, wanted);
  const auto once = icu::UnicodeString::fromUTF8(
      icu::StringPiece(reinterpret_cast<const char*>(bytes) + skipped, static_cast<int>(size - skipped)));
  icu::UnicodeString pattern;
  for (std::size_t i = 0; i < count; ++i) pattern += once;
  return pattern;
}

void on_small_stack(icu::UnicodeString pattern) {
  pthread_attr_t attributes;
  pthread_t thread = {};
  if (pthread_attr_init(&attributes) != 0 || pthread_attr_setstacksize(&attributes, kStackSize) != 0 ||
      pthread_create(&thread, &attributes, use, &pattern) != 0 || pthread_join(thread, nullptr) != 0) {
    __builtin_trap();
  }
  pthread_attr_destroy(&attributes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  on_small_stack(pattern_of(bytes, size));
  return 0;
}
