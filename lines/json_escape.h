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

/// What a block begins with.
struct PlainPrefix {
  unsigned count;    ///< bytes of whole characters that stand for themselves
  bool ends_inside;  ///< behind them begins a character that the block may only cut off
};

/// For a block of `count` bytes, of which some are none of ASCII's.
template <typename Block>
[[gnu::always_inline]] inline PlainPrefix multibyte_prefix(const Block& block, unsigned count,
                                                           unsigned special_or_high) {
  const unsigned end = 1U << count;
  const SequenceMasks masks = block.sequences();
  const unsigned leads = masks.two | masks.three;
  const unsigned wanted = leads << 1 | masks.three << 2;
  // The first byte that cannot stand for itself, or the end.
  const unsigned stop = (special_or_high & ~(masks.following | leads)) | end;
  // A character that is cut off shows as a byte that is wanted and missing, behind the block too.
  const unsigned wrong = (wanted ^ masks.following) & (stop ^ (stop - 1));
  if (wrong == 0) return {stop == end ? count : static_cast<unsigned>(std::countr_zero(stop)), false};
  const auto place = static_cast<unsigned>(std::countr_zero(wrong));
  if ((wanted >> place & 1U) == 0) return {place, false};
  return {(leads >> (place - 1) & 1U) != 0 ? place - 1 : place - 2, place == count};
}

template <typename Block>
PlainPrefix plain_prefix(const Block& block, unsigned count) {
  const unsigned special_or_high = block.special_or_high() & ((1U << count) - 1);
  if (special_or_high == 0) return {count, false};
  if ((block.high() & special_or_high) != 0) return multibyte_prefix(block, count, special_or_high);
  return {static_cast<unsigned>(std::countr_zero(special_or_high)), false};
}

/// How much of a text is written between two looks at the room that is left, and the room that it may take, with a
/// block and a character beyond.
constexpr std::size_t kEscapedAtOnce = 256;
constexpr std::size_t kRoomToEscape = (kEscapedAtOnce + 20) * kMaxJsonPiece + 16;

/// Where a text ends that was written, and whether all of it was UTF-8.
struct EscapedText {
  char* end;
  bool is_valid;
};

/// Writes a text of any bytes as what stands between the quotes of a JSON string. An Output has `char*
/// reserve_behind(char* end, std::size_t)`, see LineOutput; `target` is the end of what was written to it.
template <typename Block, typename Output>
EscapedText escape_json_by(const char* text, std::size_t length, char* target, Output& out) {
  bool is_valid = true;
  const char* const end = text + length;
  while (text != end) {
    const char* const pause = static_cast<std::size_t>(end - text) > kEscapedAtOnce ? text + kEscapedAtOnce : end;
    target = out.reserve_behind(target, kRoomToEscape);
    while (text < pause) {
      const auto left = static_cast<std::size_t>(end - text);
      PlainPrefix plain;
      // Where all of a block is plain the ends are told by its size: they need not wait for what it holds.
      if (left >= Block::kBytes) {
        const Block block(text);
        block.store(target);
        plain = plain_prefix(block, Block::kBytes);
        if (plain.count == Block::kBytes) {
          text += Block::kBytes;
          target += Block::kBytes;
          continue;
        }
      } else {
        const Block block(text, static_cast<unsigned>(left));
        block.store(target);
        plain = plain_prefix(block, static_cast<unsigned>(left));
        if (plain.count == left) return {target + left, is_valid};
      }
      text += plain.count;
      target += plain.count;
      if (plain.ends_inside && left > Block::kBytes) continue;
      const JsonPiece piece = write_json_piece(text, left - plain.count, target);
      is_valid = is_valid && piece.is_valid;
      text += piece.taken;
      target += piece.written;
    }
  }
  return {target, is_valid};
}

/// By the quickest way of this processor; most texts are short and plain.
template <typename Output>
[[gnu::always_inline]] inline EscapedText escape_json(const char* text, std::size_t length, char* target, Output& out) {
  if (length - 1 < JsonBlock::kBytes - 1) {
    const JsonBlock block(text, static_cast<unsigned>(length));
    if ((block.special_or_high() & ((1U << length) - 1)) == 0) {
      target = out.reserve_behind(target, JsonBlock::kBytes);
      block.store(target);
      return {target + length, true};
    }
  }
  return escape_json_by<JsonBlock>(text, length, target, out);
}

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_ESCAPE_H
