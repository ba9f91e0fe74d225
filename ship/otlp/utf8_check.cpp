#include "ship/otlp/utf8_check.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qzlog_ship {

namespace {

/// How many bytes the character has that begins here; 0 where none does.
std::size_t character_size(const unsigned char* at, std::size_t left) noexcept {
  const unsigned char first = at[0];
  if (first < 0x80) return 1;
  const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || size > left) return 0;
  for (std::size_t place = 1; place < size; ++place) {
    if ((at[place] & 0xC0U) != 0x80) return 0;
  }
  const unsigned char second = at[1];
  if (first == 0xE0 && second < 0xA0) return 0;
  if (first == 0xED && second > 0x9F) return 0;
  if (first == 0xF0 && second < 0x90) return 0;
  if (first == 0xF4 && second > 0x8F) return 0;
  return size;
}

}  // namespace

bool is_utf8(std::string_view bytes) noexcept {
  const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
  const unsigned char* const end = at + bytes.size();
  while (at != end) {
    std::uint64_t eight = 0;
    if (end - at >= 8) {
      std::memcpy(&eight, at, 8);
      if ((eight & 0x8080808080808080U) == 0) {
        at += 8;
        continue;
      }
    }
    const std::size_t size = character_size(at, static_cast<std::size_t>(end - at));
    if (size == 0) return false;
    at += size;
  }
  return true;
}

}  // namespace qzlog_ship
