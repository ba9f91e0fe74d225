#include "tools/choice/byte_search.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <bit>
#include <cstring>

namespace qzlog_tool {

#ifdef __SSE2__

namespace {

__m128i load(const char* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }

}  // namespace

// A place counts where the text's first two bytes and its last but one stand as they should; then the whole is
// compared. In keys with their quotes these are the quote and the letters at both ends, which tell more than the quotes
// alone.
std::size_t ByteSearch::find_in(std::string_view text, std::size_t from) const {
  constexpr std::size_t kBlock = sizeof(__m128i);
  const std::size_t size = wanted_.size();
  const __m128i first = _mm_set1_epi8(wanted_[0]);
  const __m128i second = _mm_set1_epi8(wanted_[1]);
  const __m128i late = _mm_set1_epi8(wanted_[size - 2]);
  std::size_t at = from;
  for (; at + size - 1 + kBlock <= text.size(); at += kBlock) {
    const char* const place = text.data() + at;
    const __m128i same = _mm_and_si128(
        _mm_cmpeq_epi8(load(place), first),
        _mm_and_si128(_mm_cmpeq_epi8(load(place + 1), second), _mm_cmpeq_epi8(load(place + size - 2), late)));
    for (auto found = static_cast<unsigned>(_mm_movemask_epi8(same)); found != 0; found &= found - 1) {
      const auto offset = static_cast<std::size_t>(std::countr_zero(found));
      if (std::memcmp(place + offset, wanted_.data(), size) == 0) return at + offset;
    }
  }
  return text.find(wanted_, at);
}

#else

std::size_t ByteSearch::find_in(std::string_view text, std::size_t from) const { return text.find(wanted_, from); }

#endif

}  // namespace qzlog_tool
