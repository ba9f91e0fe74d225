#include "tools/compiler/text/display_width.h"

#include <unicode/uchar.h>

#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

std::size_t character_width(char32_t code) {
  constexpr char32_t kSoftHyphen = 0xAD;
  constexpr auto kNoWidth = U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK;
  const auto character = static_cast<UChar32>(code);
  if (code != kSoftHyphen && (U_GET_GC_MASK(character) & kNoWidth) != 0) return 0;
  // Vowels and final consonants are drawn into the syllable that the consonant before them began.
  const int syllable = u_getIntPropertyValue(character, UCHAR_HANGUL_SYLLABLE_TYPE);
  if (syllable == U_HST_VOWEL_JAMO || syllable == U_HST_TRAILING_JAMO) return 0;
  const int east_asian = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
  return east_asian == U_EA_WIDE || east_asian == U_EA_FULLWIDTH ? 2 : 1;
}

}  // namespace

std::size_t display_width(std::string_view text) {
  std::size_t width = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    const Utf8Character character = decode_utf8(text, offset);
    if (character.size == 0) break;
    width += character.code < 0x80 ? 1 : character_width(character.code);
    offset += character.size;
  }
  return width;
}

}  // namespace qzlog_compiler
