#include "lines/quote_index.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <cstring>

namespace qzlog {

namespace {

// Sixteen characters, on which the compiler computes at once.
using Block = unsigned char __attribute__((vector_size(16)));

constexpr Block kQuote = Block{} + '"';
constexpr Block kBackslash = Block{} + '\\';
constexpr Block kFirstPrintable = Block{} + ' ';

// By reference: to return a vector, or to be given one, is another matter where the processor has no registers for it.
void load(const char* at, Block& block) { std::memcpy(&block, at, sizeof block); }

/// The highest bits of the characters, the first character's lowest.
std::uint64_t high_bits(const Block& block) {
#ifdef __SSE2__
  __m128i bytes;
  std::memcpy(&bytes, &block, sizeof bytes);
  return static_cast<std::uint64_t>(_mm_movemask_epi8(bytes));
#else
  std::uint64_t bits = 0;
  for (unsigned i = 0; i < sizeof block; ++i) bits |= std::uint64_t{block[i]} >> 7 << i;
  return bits;
#endif
}

std::uint64_t backslashes_in_piece(const char* piece) {
  std::uint64_t backslashes = 0;
  for (std::size_t offset = 0; offset < QuoteIndex::kPieceBytes; offset += sizeof(Block)) {
    Block block;
    load(piece + offset, block);
    backslashes |= high_bits(static_cast<Block>(block == kBackslash)) << offset;
  }
  return backslashes;
}

/// The characters of a piece that a backslash escapes. `is_escaped` says whether one in the last piece escapes the
/// first character, and becomes that for the next.
std::uint64_t escaped_by(std::uint64_t backslashes, bool& is_escaped) {
  std::uint64_t escaped = is_escaped ? 1 : 0;
  is_escaped = false;
  backslashes &= ~escaped;
  while (backslashes != 0) {
    const auto place = static_cast<unsigned>(std::countr_zero(backslashes));
    is_escaped = place == QuoteIndex::kPieceBytes - 1;
    if (is_escaped) break;
    escaped |= std::uint64_t{2} << place;
    backslashes &= ~(std::uint64_t{3} << place);
  }
  return escaped;
}

}  // namespace

bool QuoteIndex::read(const char* text, std::size_t size) {
  Block all{};
  Block refused{};
  bool is_escaped = false;
  has_backslashes_ = false;
  for (std::size_t at = 0; at < size; at += kPieceBytes) {
    std::uint64_t quotes = 0;
    Block backslashes{};
    for (std::size_t offset = 0; offset < kPieceBytes; offset += sizeof(Block)) {
      Block block;
      load(text + at + offset, block);
      all |= block;
      refused |= static_cast<Block>(block < kFirstPrintable);
      quotes |= high_bits(static_cast<Block>(block == kQuote)) << offset;
      backslashes |= static_cast<Block>(block == kBackslash);
    }
    if (is_escaped || high_bits(backslashes) != 0) {
      has_backslashes_ = true;
      quotes &= ~escaped_by(backslashes_in_piece(text + at), is_escaped);
    }
    pieces_[at / kPieceBytes] = quotes;
  }
  const std::uint64_t end = std::uint64_t{1} << (size % kPieceBytes);
  if (size % kPieceBytes == 0) pieces_[size / kPieceBytes] = 0;
  pieces_[size / kPieceBytes] |= end;
  has_high_bytes_ = high_bits(all) != 0;
  return high_bits(refused) == 0;
}

}  // namespace qzlog
