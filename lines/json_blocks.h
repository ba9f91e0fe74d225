#ifndef QZLOG_LINES_JSON_BLOCKS_H
#define QZLOG_LINES_JSON_BLOCKS_H

#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qzlog {

/// What the bytes of a block are, as masks: bit i stands for byte i.
struct SequenceMasks {
  unsigned following = 0;  ///< 80 to BF
  unsigned two = 0;        ///< begins a character of two bytes
  unsigned three = 0;      ///< begins one of three bytes, each of those that follow being any from 80 to BF
};

/// Sixteen bytes of a text, looked at in two words: for any processor. In a word each byte answers with its highest
/// bit.
class WordJsonBlock {
 public:
  static constexpr unsigned kBytes = 16;

  explicit WordJsonBlock(const char* text) {
    std::memcpy(bytes_, text, kBytes);
    read_words();
  }
  /// The first `count` bytes of a text that has no more, 1 to 15, and zeros.
  WordJsonBlock(const char* text, unsigned count) {
    std::memcpy(bytes_, text, count);
    read_words();
  }

  void store(char* target) const { std::memcpy(target, bytes_, kBytes); }
  /// What does not stand for itself in a JSON string, or is none of ASCII's.
  unsigned special_or_high() const {
    return mask([](Word word) { return word | below_blank(word) | equal(word, '"') | equal(word, '\\'); });
  }
  unsigned high() const {
    return mask([](Word word) { return word; });
  }
  SequenceMasks sequences() const {
    SequenceMasks masks;
    masks.following = mask([](Word word) { return word & ~(word << 1); });
    masks.two = mask([](Word word) { return word & word << 1 & ~(word << 2) & has_any_of(word, 0x1E); });
    masks.three = mask([](Word word) {
      return word & word << 1 & word << 2 & ~(word << 3) & has_any_of(word, 0x0F) & ~equal(word, 0xED);
    });
    return masks;
  }

 private:
  using Word = std::uint64_t;  // eight bytes, the first in the lowest place
  static constexpr Word kOnes = 0x0101010101010101U;
  static constexpr Word kHighBits = 0x80 * kOnes;
  static constexpr Word kOtherBits = 0x7F * kOnes;

  void read_words() {
    std::memcpy(words_, bytes_, kBytes);
    if constexpr (std::endian::native == std::endian::big) {
      for (Word& word : words_) word = __builtin_bswap64(word);
    }
  }
  // The additions carry nothing into the next byte.
  static Word below_blank(Word word) { return ~(((word & kOtherBits) + 0x60 * kOnes) | word); }
  static Word has_any_of(Word word, Word bits) { return (word & bits * kOnes) + kOtherBits; }
  static Word equal(Word word, Word byte) {
    const Word difference = word ^ byte * kOnes;
    return ~(((difference & kOtherBits) + kOtherBits) | difference);
  }
  /// The product puts the highest bits of the bytes side by side.
  static unsigned gather(Word answers) {
    return static_cast<unsigned>((answers & kHighBits) * 0x0002040810204081U >> 56);
  }
  template <typename Ask>
  unsigned mask(Ask ask) const {
    return gather(ask(words_[0])) | gather(ask(words_[1])) << 8;
  }

  unsigned char bytes_[kBytes] = {};
  Word words_[2];
};

#if defined(__SSE2__)

/// The same at once.
class SseJsonBlock {
 public:
  static constexpr unsigned kBytes = 16;

  explicit SseJsonBlock(const char* text) : bytes_(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text))) {}
  SseJsonBlock(const char* text, unsigned count) : bytes_(load(text, count)) {}

  void store(char* target) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(target), bytes_); }
  unsigned special_or_high() const {
    // The bytes from 80 on are negative.
    return mask(_mm_or_si128(below(0x20), _mm_or_si128(equal('"'), equal('\\'))));
  }
  unsigned high() const { return mask(bytes_); }
  SequenceMasks sequences() const {
    SequenceMasks masks;
    masks.following = mask(below(byte(0xC0)));
    masks.two = mask(_mm_and_si128(above(byte(0xC1)), below(byte(0xE0))));
    masks.three = mask(_mm_andnot_si128(equal(byte(0xED)), _mm_and_si128(above(byte(0xE0)), below(byte(0xF0)))));
    return masks;
  }

 private:
  static constexpr char byte(unsigned value) { return static_cast<char>(value); }
  static unsigned mask(__m128i bytes) { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }
  __m128i equal(char wanted) const { return _mm_cmpeq_epi8(bytes_, _mm_set1_epi8(wanted)); }
  __m128i below(char limit) const { return _mm_cmplt_epi8(bytes_, _mm_set1_epi8(limit)); }
  __m128i above(char limit) const { return _mm_cmpgt_epi8(bytes_, _mm_set1_epi8(limit)); }

  template <typename Number>
  static std::uint64_t load_number(const char* text) {
    Number number = 0;
    std::memcpy(&number, text, sizeof(number));
    return number;
  }
  /// Put together of two overlapping parts, the first and the last: nothing behind the text is read.
  static __m128i load(const char* text, unsigned count) {
    if (count >= 8) {
      const std::uint64_t last = load_number<std::uint64_t>(text + count - 8);
      // By at most 64 bits, of which more than 63 take two steps.
      const std::uint64_t behind = last >> (8 * (15 - count)) >> 8;
      return pair(load_number<std::uint64_t>(text), behind);
    }
    if (count >= 4) {
      const std::uint64_t last = load_number<std::uint32_t>(text + count - 4);
      return alone(load_number<std::uint32_t>(text) | last << (8 * (count - 4)));
    }
    const std::uint64_t middle = load_number<unsigned char>(text + count / 2);
    const std::uint64_t last = load_number<unsigned char>(text + count - 1);
    return alone(load_number<unsigned char>(text) | middle << (8 * (count / 2)) | last << (8 * (count - 1)));
  }
  static __m128i pair(std::uint64_t first, std::uint64_t second) {
    return _mm_set_epi64x(static_cast<long long>(second), static_cast<long long>(first));
  }
  static __m128i alone(std::uint64_t first) { return pair(first, 0); }

  __m128i bytes_;
};

using JsonBlock = SseJsonBlock;

#else

using JsonBlock = WordJsonBlock;

#endif

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_BLOCKS_H
