#ifndef QZLOG_LINES_JSON_BLOCKS_H
#define QZLOG_LINES_JSON_BLOCKS_H

#include <cstddef>
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

/// Sixteen bytes of a text, looked at one by one: for any processor.
class PlainJsonBlock {
 public:
  static constexpr unsigned kBytes = 16;

  explicit PlainJsonBlock(const char* text) { std::memcpy(bytes_, text, kBytes); }
  /// The first `count` bytes of a text that has no more, 1 to 15, and zeros.
  PlainJsonBlock(const char* text, unsigned count) { std::memcpy(bytes_, text, count); }

  void store(char* target) const { std::memcpy(target, bytes_, kBytes); }
  /// What does not stand for itself in a JSON string, or is none of ASCII's.
  unsigned special_or_high() const {
    return mask([](unsigned byte) { return byte < 0x20 || byte == '"' || byte == '\\' || byte >= 0x80; });
  }
  unsigned high() const {
    return mask([](unsigned byte) { return byte >= 0x80; });
  }
  SequenceMasks sequences() const {
    SequenceMasks masks;
    masks.following = mask([](unsigned byte) { return byte >= 0x80 && byte < 0xC0; });
    masks.two = mask([](unsigned byte) { return byte >= 0xC2 && byte < 0xE0; });
    masks.three = mask([](unsigned byte) { return byte > 0xE0 && byte < 0xF0 && byte != 0xED; });
    return masks;
  }

 private:
  template <typename Test>
  unsigned mask(Test test) const {
    unsigned bits = 0;
    for (unsigned i = 0; i < kBytes; ++i) bits |= static_cast<unsigned>(test(bytes_[i])) << i;
    return bits;
  }

  unsigned char bytes_[kBytes] = {};
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

using JsonBlock = PlainJsonBlock;

#endif

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_BLOCKS_H
