#ifndef QZLOG_LINES_JSON_ESCAPE_H
#define QZLOG_LINES_JSON_ESCAPE_H

#include <bit>
#include <cstddef>
#include <cstring>

#include "lines/json_blocks.h"

namespace qzlog {

/// What is written for a character, or for bytes that are none, which the quick way does not take.
struct JsonPiece {
  unsigned taken;    ///< bytes of the text
  unsigned written;  ///< bytes of JSON, kMaxJsonPiece at most
  bool is_valid;     ///< false: a replacement character was written
};
constexpr unsigned kMaxJsonPiece = 6;

/// Writes the first character of `length` bytes, at least one. What is not UTF-8 becomes replacement characters, one
/// for each sequence that begins like a character and does not become one, and for each byte that begins none.
JsonPiece write_json_piece(const char* text, std::size_t length, char* target);

/// How many of the first `count` bytes of a block are whole characters that stand for themselves; `ends_inside` becomes
/// true where what follows them is the beginning of one that the block may only cut off.
template <typename Block>
unsigned plain_prefix(const Block& block, unsigned count, bool& ends_inside) {
  const unsigned end = 1U << count;
  const unsigned stops = (block.special_or_high() & (end - 1)) | end;
  if ((block.high() & (end - 1)) == 0) return static_cast<unsigned>(std::countr_zero(stops));
  const SequenceMasks masks = block.sequences();
  const unsigned leads = masks.two | masks.three;
  const unsigned wanted = masks.two << 1 | masks.three << 1 | masks.three << 2;
  // The first byte that cannot stand for itself, or the end.
  const unsigned stop = (stops & ~(masks.following | leads)) | end;
  const unsigned up_to_stop = stop ^ (stop - 1);
  // A character that is cut off shows as a byte that is wanted and missing, behind the block too.
  const unsigned wrong = (wanted ^ masks.following) & up_to_stop;
  if (wrong == 0) return static_cast<unsigned>(std::countr_zero(stop));
  const auto place = static_cast<unsigned>(std::countr_zero(wrong));
  if ((wanted >> place & 1U) == 0) return place;
  ends_inside = place == count;
  return (leads >> (place - 1) & 1U) != 0 ? place - 1 : place - 2;
}

/// Writes a text of any bytes as what stands between the quotes of a JSON string. False when something of it was not
/// UTF-8. An Output has `char* reserve(std::size_t)`, room that may be written to, and `count_in(std::size_t)`.
template <typename Block, typename Output>
bool escape_json_by(const char* text, std::size_t length, Output& out) {
  bool is_valid = true;
  while (length != 0) {
    const bool is_whole = length >= Block::kBytes;
    const unsigned count = is_whole ? Block::kBytes : static_cast<unsigned>(length);
    const Block block = is_whole ? Block(text) : Block(text, count);
    char* const target = out.reserve(Block::kBytes + kMaxJsonPiece);
    block.store(target);
    bool ends_inside = false;
    const unsigned plain = plain_prefix(block, count, ends_inside);
    text += plain;
    length -= plain;
    out.count_in(plain);
    if (plain == count || (ends_inside && length > count - plain)) continue;
    const JsonPiece piece = write_json_piece(text, length, target + plain);
    is_valid = is_valid && piece.is_valid;
    text += piece.taken;
    length -= piece.taken;
    out.count_in(piece.written);
  }
  return is_valid;
}

template <typename Output>
bool escape_json(const char* text, std::size_t length, Output& out) {
  return escape_json_by<JsonBlock>(text, length, out);
}

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_ESCAPE_H
