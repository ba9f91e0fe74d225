#include "tools/compiler/text/text_scan.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qzlog_compiler {

namespace {

// Sixteen characters, on which the compiler computes at once. Bytes above those of ASCII are negative.
using Block = signed char __attribute__((vector_size(16)));

/// Looks for one character that `test` finds, in a block or by itself.
template <class Test>
bool finds_any(std::string_view text, const Test& test) {
  if (text.size() < sizeof(Block)) {
    bool found = false;
    for (const char character : text) found |= test(static_cast<signed char>(character)) != 0;
    return found;
  }
  // The last block may have characters of the one before.
  const char* const last = text.data() + text.size() - sizeof(Block);
  Block block;
  std::memcpy(&block, last, sizeof block);
  Block found = test(block);
  for (const char* at = text.data(); at < last; at += sizeof(Block)) {
    std::memcpy(&block, at, sizeof block);
    found |= test(block);
  }
  std::uint64_t halves[2];
  static_assert(sizeof halves == sizeof found);
  std::memcpy(halves, &found, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

}  // namespace

bool has_line_break(std::string_view text) {
  return finds_any(text, [](auto characters) { return (characters == '\n') | (characters == '\r'); });
}

bool is_printable_ascii(std::string_view text) {
  return !finds_any(text, [](auto characters) { return (characters < ' ') | (characters > '~'); });
}

}  // namespace qzlog_compiler
