#include "lines/base64_text.h"

#include <cstring>

namespace qzlog {

namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kGroupBytes = 3;
constexpr std::size_t kGroupDigits = 4;

/// One to three bytes as four characters.
void append_group(const char* bytes, std::size_t count, LineOutput& out) {
  unsigned char group[kGroupBytes] = {};
  std::memcpy(group, bytes, count);
  const unsigned bits = static_cast<unsigned>(group[0]) << 16 | static_cast<unsigned>(group[1]) << 8 | group[2];
  char* const target = out.reserve(kGroupDigits);
  for (std::size_t i = 0; i < kGroupDigits; ++i) {
    target[i] = i <= count ? kDigits[bits >> (6 * (kGroupDigits - 1 - i)) & 0x3FU] : '=';
  }
  out.count_in(kGroupDigits);
}

}  // namespace

void append_base64(const char* bytes, std::size_t count, LineOutput& out) {
  for (; count > kGroupBytes; bytes += kGroupBytes, count -= kGroupBytes) append_group(bytes, kGroupBytes, out);
  if (count != 0) append_group(bytes, count, out);
}

}  // namespace qzlog
